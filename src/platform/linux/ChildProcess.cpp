#include "platform/linux/ChildProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

namespace vt {
namespace {

/// The texts as the system takes them; they must outlive what this answers.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

class FileActions {
 public:
  explicit FileActions(const ChildProcess::Standard& standard) {
    ::posix_spawn_file_actions_init(&actions_);
    put(standard.input, STDIN_FILENO, O_RDONLY);
    put(standard.output, STDOUT_FILENO, O_WRONLY);
    put(standard.errors, STDERR_FILENO, O_WRONLY);
    ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    ::posix_spawn_file_actions_addchdir_np(&actions_, "/");
  }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }

  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  void put(std::optional<int> ours, int standard, int mode) {
    if (ours) {
      ::posix_spawn_file_actions_adddup2(&actions_, *ours, standard);
    } else {
      ::posix_spawn_file_actions_addopen(&actions_, standard, "/dev/null", mode, 0);
    }
  }

  posix_spawn_file_actions_t actions_;
};

class Attributes {
 public:
  Attributes() {
    ::posix_spawnattr_init(&attributes_);
    sigset_t signals;
    ::sigfillset(&signals);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&attributes_, &signals);
    ::posix_spawnattr_setpgroup(&attributes_, 0);  // a group of its own
    ::posix_spawnattr_setflags(
        &attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

}  // namespace

ChildProcess::ChildProcess(const std::string& path, std::vector<std::string> arguments,
                           std::vector<std::string> environment, const Standard& standard) {
  const FileActions actions(standard);
  const Attributes attributes;
  startError_ = ::posix_spawn(&pid_, path.c_str(), actions.get(), attributes.get(),
                              pointersTo(arguments).data(), pointersTo(environment).data());
  if (startError_ != 0) {
    pid_ = -1;
    return;
  }
  // From here on the process is meant by its descriptor: where the application ignores or collects
  // its children itself, the number may already be somebody else's.
  handle_.emplace(static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0)));
  if (*handle_) return;
  if (errno == ESRCH) {
    // It has ended and was collected already. Like its handle, this one is always readable.
    handle_.reset();
    handle_.emplace(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    if (*handle_) return;
  }
  startError_ = errno;
  ::kill(pid_, SIGKILL);
  collect();
}

ChildProcess::~ChildProcess() {
  kill();
  collect();
}

void ChildProcess::kill() {
  if (pid_ <= 0 || !*handle_) return;
  // Succeeds for a process that has ended but was not collected: until then its number is taken.
  if (::syscall(SYS_pidfd_send_signal, handle_->get(), SIGKILL, nullptr, 0) == 0) {
    ::kill(-pid_, SIGKILL);
  }
}

std::optional<int> ChildProcess::collect() {
  if (pid_ <= 0) return std::nullopt;
  const pid_t pid = std::exchange(pid_, -1);
  int status = 0;
  pid_t collected = 0;
  do {
    collected = ::waitpid(pid, &status, 0);
  } while (collected < 0 && errno == EINTR);
  return collected == pid ? std::optional(status) : std::nullopt;
}

}  // namespace vt
