#include "platform/linux/worker/WorkerProcess.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <vector>

#include "platform/linux/Pipe.h"
#include "platform/linux/worker/AwaitDescriptors.h"
#include "platform/linux/worker/BubblewrapArguments.h"
#include "worker/SendRequest.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kBubblewrapProgram = "/usr/bin/bwrap";
constexpr std::chrono::seconds kStartLimit{10};

/// The next message of the worker; nothing when none of this size comes in time.
template <class Message>
std::optional<Message> receive(int socket, Clock::time_point deadline) {
  std::array<pollfd, 1> awaited{{{socket, POLLIN, 0}}};
  Message message;
  if (!awaitDescriptors(awaited, deadline) ||
      ::recv(socket, &message, sizeof message, MSG_DONTWAIT) != sizeof message) {
    return std::nullopt;
  }
  return message;
}

}  // namespace

std::unique_ptr<WorkerProcess> WorkerProcess::start(const std::string& program,
                                                    WorkerConfinement confinement, int first) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return nullptr;
  FileDescriptor ours(ends[0]);
  std::unique_ptr<ChildProcess> process;
  {
    const FileDescriptor theirs(ends[1]);
    // It takes two descriptors as any request does; of this one nothing comes back.
    if (first >= 0 && !worker::sendRequest(ours.get(), {}, first, first)) return nullptr;
    const bool wrapped = confinement == WorkerConfinement::kBubblewrap;
    std::vector<std::string> arguments = {program};
    if (wrapped) arguments = bubblewrapArguments(program);
    if (confinement == WorkerConfinement::kOwnFilesOnly) {
      arguments.emplace_back(worker::kOwnFilesOnly);
    }
    process = std::make_unique<ChildProcess>(
        wrapped ? kBubblewrapProgram : program, std::move(arguments),
        // All functions of libraries are found once, rather than in the child of each file.
        std::vector<std::string>{"LC_ALL=C.UTF-8", "LD_BIND_NOW=1"},
        ChildProcess::Standard{.input = theirs.get(), .output = {}, .errors = {}});
  }
  if (process->startError() != 0) return nullptr;
  const auto greeting = receive<worker::WorkerGreeting>(ours.get(), Clock::now() + kStartLimit);
  if (!greeting) return nullptr;
  return std::unique_ptr<WorkerProcess>(
      new WorkerProcess(std::move(process), std::move(ours), greeting->walls));
}

std::optional<WorkerProcess::Asked> WorkerProcess::ask(int input,
                                                       const worker::WorkerRequest& request) {
  // What was not asked for is out of the way; and no more are unanswered than are kept.
  takeAnswersThatHaveCome();
  while (asked_ - answered_ >= kMostKept && takeAnswer(Clock::now() + kAnswerLimit)) {
  }
  std::optional<Pipe> pipe = makePipe();
  // Whoever looked into the file before left it wherever it stopped to read.
  const bool isAtStart = ::lseek(input, 0, SEEK_SET) == 0;
  if (!isUsable_ || asked_ - answered_ >= kMostKept || !pipe || !isAtStart) return std::nullopt;
  {
    const FileDescriptor childs = std::move(pipe->write);  // only the worker may hold it open
    isUsable_ = worker::sendRequest(socket_.get(), request, input, childs.get());
  }
  if (!isUsable_) return std::nullopt;
  return Asked{std::move(pipe->read), asked_++};
}

void WorkerProcess::takeAnswersThatHaveCome() {
  while (answered_ < asked_ && takeAnswer(Clock::time_point::min())) {
  }
}

bool WorkerProcess::hasEnded(std::uint64_t number) {
  takeAnswersThatHaveCome();
  return number < answered_;
}

bool WorkerProcess::takeAnswer(Clock::time_point deadline) {
  const auto answer = receive<worker::WorkerAnswer>(socket_.get(), deadline);
  if (answer) answers_[answered_++ % kMostKept] = *answer;
  return answer.has_value();
}

worker::WorkerAnswer WorkerProcess::awaitEnd(std::uint64_t number, Clock::time_point deadline) {
  while (answered_ <= number) {
    if (takeAnswer(deadline)) continue;
    isUsable_ = false;
    // A worker that ends does so for reasons of its own: only its children look at files.
    const bool hasEnded = Clock::now() < deadline;
    return {hasEnded ? worker::WorkerEnd::kNotTried : worker::WorkerEnd::kTimedOut};
  }
  if (answered_ - number > kMostKept) return {worker::WorkerEnd::kNotTried};  // it is forgotten
  return answers_[number % kMostKept];
}

}  // namespace vt
