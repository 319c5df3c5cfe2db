#pragma once

#include <cstdint>

#include "worker/ReceiveRequest.h"
#include "worker/WorkerLoop.h"

namespace vt::worker {

/// What the child tells once it is confined, as its first message.
inline constexpr std::uint8_t kConfined = 1;

/// What it tells of each file once it no longer looks into it. A file that has taken the child over
/// may tell anything.
struct FileEnd {
  TaskEnd end = TaskEnd::kMade;
  std::uint32_t isLast = 0;  ///< not 0: it looks into no others
};

/// All that the child does: limits itself, raises the last wall, does the task with the first file,
/// and, where the origin of that allows it, with what comes through `socket` until that is closed.
[[noreturn]] void decodeAndExit(int socket, const ReceivedRequest& first, const Task& task,
                                const ChildRules& rules, const PrepareTask& prepare);

}  // namespace vt::worker
