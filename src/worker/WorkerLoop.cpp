#include "worker/WorkerLoop.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <optional>
#include <utility>

#include "worker/ReceiveRequest.h"
#include "worker/Sandbox.h"
#include "worker/WorkerProtocol.h"

namespace vt::worker {
namespace {

/// What the child process does, and ends with.
[[noreturn]] void workAndExit(int socket, const Task& task, const ReceivedRequest& request,
                              const ChildRules& rules) {
  const auto exitWith = [](TaskEnd end) { ::_exit(static_cast<int>(end)); };
  ::close(socket);
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || !limitResources()) {
    exitWith(TaskEnd::kNotConfined);
  }
  const bool isConfined = rules.allowed && rules.allowed->putInForce();
  if (!isConfined && rules.mustBeConfined) exitWith(TaskEnd::kNotConfined);
  const TaskEnd end = task(request.input.get(), request.output.get());
  // The reader need not wait until all that the process holds is given back.
  ::close(request.output.get());
  exitWith(end);
  __builtin_unreachable();
}

/// Whether the process has ended by itself within the limit. No longer waits for it once nobody is
/// left at the other end of the socket.
bool endsInTime(pid_t child, std::chrono::milliseconds limit, int socket) {
  const int handle = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
  if (handle < 0) return false;
  // No events asked of the socket: its end is told all the same.
  std::array<pollfd, 2> awaited{{{handle, POLLIN, 0}, {socket, 0, 0}}};
  const int ready = ::poll(awaited.data(), awaited.size(), static_cast<int>(limit.count()));
  ::close(handle);
  return ready > 0 && awaited[0].revents != 0;
}

WorkerEnd endOf(pid_t child, std::chrono::milliseconds limit, int socket) {
  const bool ended = endsInTime(child, limit, socket);
  if (!ended) ::kill(child, SIGKILL);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!ended) return WorkerEnd::kTimedOut;
  if (!WIFEXITED(status)) return WorkerEnd::kCrashed;
  switch (static_cast<TaskEnd>(WEXITSTATUS(status))) {
    case TaskEnd::kMade:
      return WorkerEnd::kMade;
    case TaskEnd::kNone:
      return WorkerEnd::kNone;
    case TaskEnd::kNotConfined:
      return WorkerEnd::kNotTried;
    default:
      return WorkerEnd::kCrashed;
  }
}

WorkerEnd answer(int socket, ReceivedRequest request, const ChildRules& rules,
                 const std::function<Task(const WorkerRequest&)>& prepare) {
  const Task task = prepare(request.request);
  if (!task) return WorkerEnd::kNone;
  const pid_t child = ::fork();
  if (child < 0) return WorkerEnd::kNotTried;
  if (child == 0) workAndExit(socket, task, request, rules);
  {
    const FileDescriptor childs = std::move(request.output);
  }  // the pipe is to end with the child
  return endOf(child, rules.fileLimit, socket);
}

}  // namespace

void serveRequests(int socket, const ChildRules& rules,
                   const std::function<Task(const WorkerRequest&)>& prepare) {
  while (std::optional<ReceivedRequest> request = receiveRequest(socket)) {
    const WorkerAnswer reply{answer(socket, *std::move(request), rules, prepare)};
    if (::send(socket, &reply, sizeof reply, MSG_NOSIGNAL) != sizeof reply) return;
  }
}

}  // namespace vt::worker
