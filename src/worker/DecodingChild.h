#pragma once

#include "worker/ReceiveRequest.h"
#include "worker/WorkerLoop.h"

namespace vt::worker {

/// What the child tells of each file once it no longer looks into it.
struct FileEnd {
  TaskEnd end = TaskEnd::kMade;
  bool isLast = false;  ///< it looks into no others
};

/// All that the child does: limits itself, raises the last wall, does the task with the first file,
/// and, where the origin of that allows it, with what comes through `socket` until that is closed.
[[noreturn]] void decodeAndExit(int socket, const ReceivedRequest& first, const Task& task,
                                const ChildRules& rules, const PrepareTask& prepare);

}  // namespace vt::worker
