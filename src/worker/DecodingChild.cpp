#include "worker/DecodingChild.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <ctime>
#include <optional>

#include "worker/Sandbox.h"

namespace vt::worker {
namespace {

// The limit of a processor counts for all files of a process: the last one is left nearly all of
// it.
constexpr std::clock_t kMostProcessorTime = CLOCKS_PER_SEC;
// Kibibytes of memory beyond those at the start. What was once needed is hardly given back.
constexpr long kMostGrowth = 32L * 1024;

long mostMemory() {
  rusage usage{};
  return ::getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
}

bool limitItself(const ChildRules& rules) {
  if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || !limitResources()) return false;
  return (rules.allowed && rules.allowed->putInForce()) || !rules.mustBeConfined;
}

TaskEnd workAt(const Task& task, const ReceivedRequest& request) {
  return task ? task(request.input.get(), request.output.get()) : TaskEnd::kNone;
}

}  // namespace

void decodeAndExit(int socket, const ReceivedRequest& first, const Task& task,
                   const ChildRules& rules, const PrepareTask& prepare) {
  // Where it is not, more can be received of nobody.
  if (::dup2(socket, kChildSocket) != kChildSocket || !limitItself(rules)) ::_exit(1);
  ::close(socket);
  // Before any byte of a file is read: what a file does later can't be taken for a lack of walls.
  if (::write(kChildSocket, &kConfined, sizeof kConfined) != sizeof kConfined) ::_exit(1);
  const long memoryAtStart = mostMemory();
  FileEnd told;
  const auto tell = [&] {
    if (std::clock() > kMostProcessorTime || mostMemory() - memoryAtStart > kMostGrowth) {
      told.isLast = 1;
    }
    if (::write(kChildSocket, &told, sizeof told) != sizeof told || told.isLast != 0) ::_exit(0);
  };
  told.isLast = first.request.origin == kOwnOrigin ? 1 : 0;
  told.end = workAt(task, first);
  // The reader need not wait until all that the process holds is given back.
  ::close(first.output.get());
  ::close(first.input.get());
  tell();
  while (std::optional<ReceivedRequest> next = receiveRequest(kChildSocket)) {
    told.end = workAt(prepare(next->request), *next);
    next.reset();
    tell();
  }
  ::_exit(0);
}

}  // namespace vt::worker
