#include "support/Misdeeds.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "worker/ReadInput.h"

namespace vt {
namespace {

bool canOpen(const std::string& path, int flags) { return open(path.c_str(), flags, 0600) >= 0; }

bool leaks() {
  // Whatever is open besides the file, the pipe and the standard ones.
  int count = 0;
  for (int descriptor = 0; descriptor < 64; ++descriptor) {
    count += fcntl(descriptor, F_GETFD) >= 0 ? 1 : 0;
  }
  return count > 5;  // where more files come from, output, errors, the file, the pipe
}

/// Whether so many threads can be alive at once.
bool startsThreads(int most) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 16384);
  for (int i = 0; i < most; ++i) {
    pthread_t thread{};
    const auto wait = [](void*) -> void* { return poll(nullptr, 0, -1), nullptr; };
    if (pthread_create(&thread, &attributes, wait, nullptr) != 0) return false;
  }
  return true;
}

}  // namespace

Misdeed misdeedIn(int input) {
  const std::string text = worker::readBeginning(input, 4096);
  const std::string deed = text.substr(0, text.find(' '));
  return {deed, text.size() > deed.size() ? text.substr(deed.size() + 1) : ""};
}

std::optional<bool> tryMisdeed(const Misdeed& misdeed, int input) {
  const auto& [deed, what] = misdeed;
  if (deed == "behave") return false;
  if (deed == "read") return canOpen(what, O_RDONLY);
  if (deed == "write") return canOpen(what, O_WRONLY | O_CREAT);
  if (deed == "truncate") return canOpen(what, O_RDONLY | O_TRUNC);
  if (deed == "write-input") return write(input, "x", 1) == 1;
  if (deed == "unlink") return unlink(what.c_str()) == 0;
  if (deed == "symlink") return symlink("/etc/passwd", what.c_str()) == 0;
  if (deed == "chmod") return chmod(what.c_str(), 0777) == 0;
  if (deed == "exec") return execl("/bin/true", "true", nullptr) == 0;
  if (deed == "fork") return fork() >= 0;
  if (deed == "vfork") return syscall(SYS_vfork) >= 0;
  if (deed == "socket") return socket(AF_INET, SOCK_STREAM, 0) >= 0;
  if (deed == "unix-socket") return socket(AF_UNIX, SOCK_STREAM, 0) >= 0;
  if (deed == "ptrace") return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0;
  if (deed == "kill") return kill(getppid(), SIGKILL) == 0;
  if (deed == "kill-by-thread") return syscall(SYS_tgkill, getppid(), getppid(), 9) == 0;
  if (deed == "many-threads") return startsThreads(5000);
  if (deed == "regain-root") return setuid(0) == 0;
  if (deed == "unshare") return syscall(SYS_unshare, 0x10000000) == 0;
  if (deed == "mount") return syscall(SYS_mount, "none", "/", "tmpfs", 0, "") == 0;
  if (deed == "keyctl") return syscall(SYS_keyctl, 0, -3, 0) >= 0;
  if (deed == "bpf") return syscall(SYS_bpf, 0, nullptr, 0) >= 0;
  if (deed == "io-uring") return syscall(SYS_io_uring_setup, 1, nullptr) >= 0;
  if (deed == "raise-limit") {
    const unsigned long limits[2] = {~0UL, ~0UL};
    return syscall(SYS_prlimit64, 0, 9 /* RLIMIT_AS */, limits, nullptr) == 0;
  }
  if (deed == "leak") return leaks();
  if (deed == "who") return geteuid() == 0 || getuid() == 0;
  if (deed == "crash") abort();
  if (deed == "exit") _exit(what.empty() ? 0 : std::stoi(what));
  if (deed == "throw") throw 1;
  if (deed == "spin") {
    for (volatile bool forEver = true; forEver;) {
    }
  }
  if (deed == "wait") poll(nullptr, 0, -1);
  if (deed == "memory") {
    std::vector<std::string> hoard;
    for (;;) hoard.emplace_back(std::size_t{64} << 20, 'x');
  }
  if (deed == "threads") {
    std::thread other([] {});
    other.join();
    return false;
  }
  return std::nullopt;
}

void writeToPipe(int input, const std::string& bytes) {
  for (int descriptor = 63; descriptor > 2; --descriptor) {
    if (descriptor != input && write(descriptor, bytes.data(), bytes.size()) > 0) break;
  }
}

}  // namespace vt
