#pragma once

#include <memory>

#include "foundation/FunctionRef.h"
#include "platform/linux/worker/WorkerProcess.h"

namespace vt {

/// A worker that is started when it is first needed, and again once it has ended. Behind which
/// walls is settled with the first start: in bubblewrap's namespaces when they can be had, else
/// behind Landlock and seccomp, else not at all. `Worker` has isUsable().
template <class Worker>
class SettledWorker {
 public:
  using Start = FunctionRef<std::unique_ptr<Worker>(WorkerConfinement)>;

  /// Nullptr when it cannot be started now, or never behind walls.
  Worker* running(Start start) {
    if (worker_ && worker_->isUsable()) return worker_.get();
    // Before another is started, so that at no time there are two.
    worker_.reset();
    while (confinement_ != WorkerConfinement::kOwnFilesOnly) {
      worker_ = start(confinement_);
      if (worker_) isSettled_ = true;
      // What could be done once can be done again, if perhaps not now.
      if (isSettled_) return worker_.get();
      confinement_ = confinement_ == WorkerConfinement::kBubblewrap
                         ? WorkerConfinement::kOwnWalls
                         : WorkerConfinement::kOwnFilesOnly;
    }
    return nullptr;
  }

 private:
  std::unique_ptr<Worker> worker_;
  WorkerConfinement confinement_ = WorkerConfinement::kBubblewrap;
  bool isSettled_ = false;  // that it is this confinement: a worker was started in it
};

}  // namespace vt
