#include "worker/DecodingProcess.h"

#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "worker/DecodingChild.h"
#include "worker/SendRequest.h"

namespace vt::worker {
namespace {

// A fork then costs each file next to nothing; what a library keeps from file to file stays little.
constexpr unsigned kMostFiles = 64;

WorkerEnd endOf(TaskEnd end) {
  switch (end) {
    case TaskEnd::kMade:
      return WorkerEnd::kMade;
    case TaskEnd::kNone:
      return WorkerEnd::kNone;
    default:
      return WorkerEnd::kCrashed;
  }
}

}  // namespace

std::unique_ptr<DecodingProcess> DecodingProcess::start(int clients, const ReceivedRequest& first,
                                                        const Task& task, const ChildRules& rules,
                                                        const PrepareTask& prepare) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return nullptr;
  FileDescriptor ours(ends[0]);
  FileDescriptor theirs(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) return nullptr;
  if (child == 0) {
    ::close(clients);
    ::close(ours.get());
    decodeAndExit(theirs.get(), first, task, rules, prepare);
  }
  FileDescriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
  const bool isWatched = static_cast<bool>(handle);
  std::unique_ptr<DecodingProcess> process(
      new DecodingProcess(child, std::move(handle), std::move(ours), first.request.origin));
  {
    const FileDescriptor childs = std::move(theirs);
  }  // its end is told by the end of the child
  return isWatched && process->isConfined() ? std::move(process) : nullptr;
}

bool DecodingProcess::isConfined() const {
  std::uint8_t told = 0;
  return ::recv(socket_.get(), &told, sizeof told, 0) == sizeof told && told == kConfined;
}

bool DecodingProcess::takes(const WorkerRequest& request) const {
  return child_ != 0 && files_ < kMostFiles && origin_ != kOwnOrigin && origin_ == request.origin;
}

bool DecodingProcess::goOn(const ReceivedRequest& next) {
  if (!sendRequest(socket_.get(), next.request, next.input.get(), next.output.get())) return false;
  ++files_;
  return true;
}

WorkerAnswer DecodingProcess::await(std::chrono::milliseconds limit, int clients) {
  const bool wasShared = files_ > 1;
  // No events asked of the clients' socket: its end is told all the same.
  std::array<pollfd, 3> awaited{
      {{socket_.get(), POLLIN, 0}, {handle_.get(), POLLIN, 0}, {clients, 0, 0}}};
  const int ready = ::poll(awaited.data(), awaited.size(), static_cast<int>(limit.count()));
  FileEnd told;
  if (ready > 0 && (awaited[0].revents & POLLIN) != 0 &&
      ::recv(socket_.get(), &told, sizeof told, MSG_DONTWAIT) == sizeof told) {
    const WorkerEnd how = endOf(told.end);
    if (told.isLast != 0 || (how != WorkerEnd::kMade && how != WorkerEnd::kNone)) end();
    return {how, wasShared};
  }
  // Without a word, with whatever status: a library that exits has not looked into the file.
  const bool hasEnded = ready > 0 && (awaited[1].revents != 0 || awaited[0].revents != 0);
  end();
  return {hasEnded ? WorkerEnd::kCrashed : WorkerEnd::kTimedOut, wasShared};
}

void DecodingProcess::end() {
  if (child_ == 0) return;
  ::kill(child_, SIGKILL);
  while (::waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
  }
  child_ = 0;
}

}  // namespace vt::worker
