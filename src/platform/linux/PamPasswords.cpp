#include "platform/linux/PamPasswords.h"

#include <errno.h>
#include <poll.h>
#include <shadow.h>
#include <string.h>  // explicit_bzero
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/AuthProtocol.h"
#include "platform/linux/ChildProcess.h"
#include "platform/linux/FilePasswords.h"
#include "platform/linux/Pipe.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kLargestShadowEntry = 65536;

bool isUsable(const std::string& text) {
  return !text.empty() && text.size() <= auth::kLongestText && text.find('\0') == text.npos;
}

/// The request in bytes, wiped when it goes.
class Request {
 public:
  Request(const std::string& name, const std::string& password) {
    append(name);
    append(password);
  }
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;
  ~Request() { explicit_bzero(bytes_.data(), bytes_.size()); }

  bool writeTo(int descriptor) const {
    ssize_t written = 0;
    do {
      written = write(descriptor, bytes_.data(), length_);
    } while (written < 0 && errno == EINTR);
    return written == static_cast<ssize_t>(length_);
  }

 private:
  void append(const std::string& text) {
    const auto length = static_cast<std::uint32_t>(text.size());
    std::memcpy(bytes_.data() + length_, &length, sizeof(length));
    std::memcpy(bytes_.data() + length_ + sizeof(length), text.data(), text.size());
    length_ += sizeof(length) + text.size();
  }

  std::array<char, auth::kLongestRequest> bytes_{};
  std::size_t length_ = 0;
};

/// Whether there is something to read, or an end to see, before `deadline`.
bool becomesReadable(int descriptor, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(
        std::max(deadline, Clock::now()) - Clock::now());
    pollfd waiting{descriptor, POLLIN, 0};
    const int ready = poll(&waiting, 1, std::max(static_cast<int>(left.count()), 0));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
    if (Clock::now() >= deadline) return false;
  }
}

/// Whether the helper ended by itself before `deadline` and said by its exit status that it
/// accepted, or its status was collected by somebody else. Afterwards it is gone.
bool finish(ChildProcess& helper, Clock::time_point deadline) {
  if (!becomesReadable(helper.handle(), deadline)) helper.kill();
  const std::optional<int> status = helper.collect();
  return !status || (WIFEXITED(*status) && WEXITSTATUS(*status) == auth::kExitAccepted);
}

/// What the helper wrote until it closed its end, two bytes at most; nothing when that takes until
/// `deadline` or fails.
std::optional<std::string> readAnswer(int descriptor, Clock::time_point deadline) {
  std::string answer;
  while (answer.size() < 2) {
    if (!becomesReadable(descriptor, deadline)) return std::nullopt;
    char byte = 0;
    const ssize_t got = read(descriptor, &byte, 1);
    if (got == 0) return answer;
    if (got < 0 && errno != EINTR) return std::nullopt;
    if (got > 0) answer += byte;
  }
  return answer;
}

bool serviceExists(const std::string& service) {
  struct stat status{};
  const std::string path = auth::kServiceFolder + service;
  return auth::isServiceName(service) && stat(path.c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

}  // namespace

PamPasswords::PamPasswords(Options options) : options_(std::move(options)) {
  if (options_.helper.empty()) options_.helper = installedHelper();
}

std::string PamPasswords::installedHelper() { return VT_AUTH_HELPER; }

bool PamPasswords::verify(const std::string& name, const std::string& password) const {
  if (!isUsable(name) || !isUsable(password) || !serviceExists(options_.service)) return false;
  const Clock::time_point deadline = Clock::now() + options_.limit;
  std::optional<Pipe> request = makePipe();
  std::optional<Pipe> answer = makePipe();
  if (!request || !answer) return false;
  // Written before anybody reads: it fits into the pipe, and no reader can go away meanwhile and
  // raise SIGPIPE in the application.
  if (!Request(name, password).writeTo(request->write.get())) return false;

  ChildProcess helper(options_.helper, {options_.helper, options_.service},
                      {"PATH=/usr/sbin:/usr/bin:/sbin:/bin"},
                      {.input = request->read.get(), .output = answer->write.get(), .errors = {}});
  // The helper sees the end of its input, and we the end of its answer, only when ours are closed.
  const FileDescriptor source = std::move(answer->read);
  request.reset();
  answer.reset();
  if (helper.startError() != 0) return false;
  const std::optional<std::string> said = readAnswer(source.get(), deadline);
  return finish(helper, deadline) && said == std::string(1, auth::kAccepted);
}

bool PamPasswords::isOpen(const std::string& name) const {
  spwd entry{};
  spwd* found = nullptr;
  std::vector<char> buffer(1024);
  int error = getspnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
  while (error == ERANGE && buffer.size() < kLargestShadowEntry) {
    buffer.resize(buffer.size() * 2);
    error = getspnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found);
  }
  if (error != 0 || !found) return true;
  const bool isLocked = found->sp_pwdp && found->sp_pwdp[0] == '!';
  PasswordDates dates;
  dates.accountExpiry = found->sp_expire;
  explicit_bzero(buffer.data(), buffer.size());
  const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
  return !isLocked && mayBeUsed(dates, today.time_since_epoch().count());
}

}  // namespace vt
