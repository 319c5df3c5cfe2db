#pragma once

#include <chrono>
#include <functional>

#include "worker/DecoderFilter.h"
#include "worker/WorkerProtocol.h"

namespace vt::worker {

/// How a child's task ends. Any other number means that it crashed.
enum class TaskEnd : int {
  kMade = 0,        ///< what was asked for is in the output
  kNone = 1,        ///< the file has none to give
  kNotWritten = 3,  ///< nobody takes the output
};

/// What the child does with one file: looks into `input`, which is open for reading and at its
/// beginning, and writes what it finds to `output`. Both are borrowed.
using Task = std::function<TaskEnd(int input, int output)>;

/// Gives the task for a request, once what it needs is loaded; an empty one when there is none.
using PrepareTask = std::function<Task(const WorkerRequest&)>;

/// What each child may do.
struct ChildRules {
  std::chrono::milliseconds fileLimit;     ///< by the clock; it is then killed
  const DecoderFilter* allowed = nullptr;  ///< the system calls; borrowed
  bool mustBeConfined = true;              ///< and else does nothing
};

/// Answers the requests that come over the socket `socket` until it is closed, in a child process
/// that is limited and can do nothing but look into its file. It goes on with the next one when
/// both are of one origin; else that has another child.
///
/// `prepare` is called in this process before a child is made, to load what its task needs, so that
/// it is loaded once; and in a child that goes on.
void serveRequests(int socket, const ChildRules& rules, const PrepareTask& prepare);

}  // namespace vt::worker
