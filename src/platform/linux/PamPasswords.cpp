#include "platform/linux/PamPasswords.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string.h>  // explicit_bzero
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/linux/AuthProtocol.h"
#include "platform/linux/FileDescriptor.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  FileDescriptor read;
  FileDescriptor write;
};

/// `descriptor` moved out of the way of the standard ones, which the helper's are put in place of;
/// the application may have closed its own.
FileDescriptor aboveStandard(int descriptor) {
  FileDescriptor given(descriptor);
  if (given.get() > STDERR_FILENO) return given;
  return FileDescriptor(fcntl(given.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

std::optional<Pipe> makePipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  Pipe pipe{aboveStandard(ends[0]), aboveStandard(ends[1])};
  if (!pipe.read || !pipe.write) return std::nullopt;
  return pipe;
}

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

/// The helper process. Ended and collected when this goes.
class Helper {
 public:
  Helper(const std::string& path, const std::string& service, int input, int output) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);

    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigfillset(&signals);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

    std::string program = path;
    std::string argument = service;
    std::array<char*, 3> arguments{program.data(), argument.data(), nullptr};
    std::string searchPath = "PATH=/usr/sbin:/usr/bin:/sbin:/bin";
    std::array<char*, 2> environment{searchPath.data(), nullptr};
    if (posix_spawn(&pid_, path.c_str(), &actions, &attributes, arguments.data(),
                    environment.data()) != 0) {
      pid_ = -1;
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    // From here on the process is meant by its descriptor: where the application ignores or
    // collects its children itself, the number may already be somebody else's.
    if (pid_ > 0) handle_.emplace(static_cast<int>(syscall(SYS_pidfd_open, pid_, 0)));
  }
  Helper(const Helper&) = delete;
  Helper& operator=(const Helper&) = delete;
  ~Helper() { finish(Clock::time_point::min()); }

  bool isRunning() const { return pid_ > 0; }

  /// Whether the process ended by itself before `deadline` and said by its exit status that it
  /// accepted, or its status was collected by somebody else. Afterwards it is gone.
  bool finish(Clock::time_point deadline) {
    if (pid_ <= 0) return false;
    if (*handle_ && !becomesReadable(handle_->get(), deadline)) {
      syscall(SYS_pidfd_send_signal, handle_->get(), SIGKILL, nullptr, 0);
    }
    const pid_t pid = std::exchange(pid_, -1);
    int status = 0;
    pid_t collected = 0;
    do {
      collected = waitpid(pid, &status, 0);
    } while (collected < 0 && errno == EINTR);
    if (collected < 0) return errno == ECHILD;
    return WIFEXITED(status) && WEXITSTATUS(status) == auth::kExitAccepted;
  }

 private:
  pid_t pid_ = -1;
  std::optional<FileDescriptor> handle_;
};

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

  Helper helper(options_.helper, options_.service, request->read.get(), answer->write.get());
  // The helper sees the end of its input, and we the end of its answer, only when ours are closed.
  const FileDescriptor source = std::move(answer->read);
  request.reset();
  answer.reset();
  if (!helper.isRunning()) return false;
  const std::optional<std::string> said = readAnswer(source.get(), deadline);
  return helper.finish(deadline) && said == std::string(1, auth::kAccepted);
}

}  // namespace vt
