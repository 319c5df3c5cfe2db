#include "platform/linux/ForkedRunner.h"

#include <fmt/format.h>
#include <linux/ioprio.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace vt {
namespace {

constexpr int kLowestPriority = 19;

/// Makes a process that was forked by `parent` one that keeps nothing from anybody: not alive
/// without it, no lock, no pipe and no socket of its open, and the processor and the disk only when
/// nobody else wants them.
void standBack(pid_t parent, int keptDescriptor) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);  // it ended before that was said
  const auto kept = static_cast<unsigned>(keptDescriptor);
  if (kept > STDERR_FILENO + 1) ::close_range(STDERR_FILENO + 1, kept - 1, 0);
  ::close_range(kept + 1, ~0U, 0);
  // Where it may not be had, the work takes its turn like others.
  ::setpriority(PRIO_PROCESS, 0, kLowestPriority);
  ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, 0, IOPRIO_PRIO_VALUE(IOPRIO_CLASS_IDLE, 0));
}

std::string endingOf(int status) {
  if (WIFSIGNALED(status)) return fmt::format("ended by signal {}", WTERMSIG(status));
  const int code = WEXITSTATUS(status);
  return code == 0 ? "" : fmt::format("ended with {}", code);
}

}  // namespace

std::optional<StoreError> ForkedRunner::start(std::function<void()> work, int keptDescriptor) {
  end();
  ending_.clear();
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child < 0) {
    return StoreError{StoreError::Kind::kFailed,
                      fmt::format("cannot start a process: {}", std::strerror(errno))};
  }
  if (child == 0) {
    standBack(parent, keptDescriptor);
    work();
    ::_exit(0);  // nothing of the parent's is undone or written twice
  }
  process_ = child;
  return std::nullopt;
}

std::optional<std::string> ForkedRunner::ended() {
  if (process_ == 0) return ending_;
  int status = 0;
  pid_t done = 0;
  do {
    done = ::waitpid(process_, &status, WNOHANG);
  } while (done < 0 && errno == EINTR);
  if (done == 0) return std::nullopt;
  process_ = 0;
  ending_ = done < 0 ? "nobody knows how" : endingOf(status);
  return ending_;
}

void ForkedRunner::end() {
  if (process_ == 0) return;
  ::kill(process_, SIGKILL);
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = 0;
  ending_ = endingOf(status);
}

}  // namespace vt
