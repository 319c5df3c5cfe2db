// Checks one password by PAM. Started by the server for each check, with the name of the PAM
// service as its one argument; name and password come through standard input, the verdict goes out
// as one byte through standard output and as the exit status.

#include <errno.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/AuthProtocol.h"
#include "vistaro-auth/Conversation.h"

namespace {

using namespace vt::auth;

// The server gives up long before; this is for a module that hangs when the server is gone.
constexpr unsigned kLastResortSeconds = 120;

void hardenProcess() {
  prctl(PR_SET_DUMPABLE, 0);
  const rlimit none{0, 0};
  setrlimit(RLIMIT_CORE, &none);
  // A module may wait for a child of its own.
  signal(SIGCHLD, SIG_DFL);
  signal(SIGPIPE, SIG_IGN);
  alarm(kLastResortSeconds);
}

bool readExactly(void* bytes, std::size_t size) {
  auto* next = static_cast<char*>(bytes);
  while (size > 0) {
    const ssize_t got = read(STDIN_FILENO, next, size);
    if (got == 0 || (got < 0 && errno != EINTR)) return false;
    if (got < 0) continue;
    next += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

std::optional<std::string> readText() {
  std::uint32_t length = 0;
  if (!readExactly(&length, sizeof(length))) return std::nullopt;
  if (length == 0 || length > kLongestText) return std::nullopt;
  std::string text(length, '\0');
  if (!readExactly(text.data(), length)) return std::nullopt;
  if (text.find('\0') != text.npos) return std::nullopt;
  return text;
}

bool atEndOfInput() {
  char extra = 0;
  return read(STDIN_FILENO, &extra, 1) == 0;
}

bool serviceExists(const std::string& service) {
  struct stat status{};
  return isServiceName(service) && stat((kServiceFolder + service).c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

int check(const std::string& service) {
  const std::optional<std::string> name = readText();
  if (!name) return kExitBadRequest;
  std::optional<std::string> password = readText();
  if (!password) return kExitBadRequest;
  int verdict = kExitBadRequest;
  // Without its file a service falls under the rules for "other".
  if (atEndOfInput() && serviceExists(service)) {
    verdict = isAcceptedByPam(service, *name, *password) ? kExitAccepted : kExitRefused;
  }
  explicit_bzero(password->data(), password->size());
  return verdict;
}

}  // namespace

int main(int argc, char** argv) {
  hardenProcess();
  const int verdict = argc == 2 ? check(argv[1]) : kExitBadRequest;
  const char answer = verdict == kExitAccepted ? kAccepted : kRefused;
  if (write(STDOUT_FILENO, &answer, 1) != 1) return kExitBadRequest;
  return verdict;
}
