#pragma once

#include <chrono>
#include <functional>

#include "worker/WorkerLoop.h"

namespace vt::worker {

/// The task for a request, once what it needs is loaded; an empty one when there is none. With
/// `ownFilesOnly` nothing confines its process: only files that ship with this program may be
/// looked into.
using TaskSource = std::function<Task(const WorkerRequest& request, bool ownFilesOnly)>;

/// What a worker does from its start on: gives up its rights, raises the walls, greets and serves
/// until its standard input is closed. Gives the exit status of the program: other than 0, and
/// nothing was looked into, when the walls that the arguments promise do not stand. A file may take
/// `fileLimit` by the clock.
int runWorker(int argc, char** argv, const TaskSource& tasks,
              std::chrono::milliseconds fileLimit = kFileLimit);

}  // namespace vt::worker
