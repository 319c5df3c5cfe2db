#pragma once

#include <chrono>
#include <functional>

#include "worker/DecoderFilter.h"
#include "worker/WorkerProtocol.h"

namespace vt::worker {

/// How a child's task ends. Any other number means that it crashed.
enum class TaskEnd : int {
  kMade = 0,         ///< what was asked for is in the output
  kNone = 1,         ///< the file has none to give
  kNotConfined = 2,  ///< told by the loop alone
  kNotWritten = 3,   ///< nobody takes the output
};

/// What the child for one file does: looks into `input`, which is open for reading and at its
/// beginning, and writes what it finds to `output`. Both are borrowed.
using Task = std::function<TaskEnd(int input, int output)>;

/// What each child may do.
struct ChildRules {
  std::chrono::milliseconds fileLimit;     ///< by the clock; it is then killed
  const DecoderFilter* allowed = nullptr;  ///< the system calls; borrowed
  bool mustBeConfined = true;              ///< and else does nothing
};

/// Answers the requests that come over the socket `socket` until it is closed, each in a child
/// process of its own that is limited and can do nothing but look into its file.
///
/// `prepare` is called in this process before the child is made, to load what its task needs, so
/// that it is loaded once; it gives the task, or an empty one when there is none for the request.
void serveRequests(int socket, const ChildRules& rules,
                   const std::function<Task(const WorkerRequest&)>& prepare);

}  // namespace vt::worker
