#include "worker/WorkerMain.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>
#include <string_view>

#include "worker/FreshHeap.h"
#include "worker/Sandbox.h"
#include "worker/WorkerLoop.h"

namespace vt::worker {
namespace {

bool isAsked(int argc, char** argv, std::string_view option) {
  for (int i = 1; i < argc; ++i) {
    if (argv[i] == option) return true;
  }
  return false;
}

}  // namespace

int runWorker(int argc, char** argv, const TaskSource& tasks, std::chrono::milliseconds fileLimit) {
  const bool ownFilesOnly = isAsked(argc, argv, kOwnFilesOnly);
  // A reader that is gone ends a write, not the worker.
  ::signal(SIGPIPE, SIG_IGN);
  WorkerGreeting greeting;
  if (isAsked(argc, argv, kInsideBubblewrap)) greeting.walls |= kBubblewrap;
  // Not even by its own kind is the worker to be looked into.
  if (!dropRoot() || ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0) return 1;
  const std::optional<DecoderFilter> allowed = DecoderFilter::make();
  if (raiseLandlock()) greeting.walls |= kLandlock;
  if (allowed && raiseSeccompForWorker()) greeting.walls |= kSeccomp;
  const bool hidesFiles = (greeting.walls & (kBubblewrap | kLandlock)) != 0;
  const bool isConfined = hidesFiles && (greeting.walls & kSeccomp) != 0;
  if (!isConfined && !ownFilesOnly) return 1;
  if (::send(STDIN_FILENO, &greeting, sizeof greeting, MSG_NOSIGNAL) != sizeof greeting) return 1;
  keepHeapFresh();
  serveRequests(STDIN_FILENO, {fileLimit, allowed ? &*allowed : nullptr, isConfined},
                [&](const WorkerRequest& request) { return tasks(request, ownFilesOnly); });
  return 0;
}

}  // namespace vt::worker
