#pragma once

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <utility>

#include "platform/linux/FileDescriptor.h"
#include "worker/ReceiveRequest.h"
#include "worker/WorkerLoop.h"
#include "worker/WorkerProtocol.h"

namespace vt::worker {

/// The child process that looks into files of one origin, one after the other. Killed with this
/// object.
class DecodingProcess {
 public:
  /// Starts it with its first file and the task for that. `clients` is the socket that requests
  /// come over, which it does not get. Nullptr when there can be no process, or none that is
  /// confined as `rules` demand.
  static std::unique_ptr<DecodingProcess> start(int clients, const ReceivedRequest& first,
                                                const Task& task, const ChildRules& rules,
                                                const PrepareTask& prepare);
  DecodingProcess(const DecodingProcess&) = delete;
  DecodingProcess& operator=(const DecodingProcess&) = delete;
  ~DecodingProcess() { end(); }

  /// Whether it may look into the file of the request, too.
  bool takes(const WorkerRequest& request) const;
  /// Hands it another file that it takes. False when it can't be reached.
  bool goOn(const ReceivedRequest& next);

  /// Waits for the end of the file that it was handed last, for no longer than `limit`, and than
  /// somebody is at the other end of `clients`. Unless that was looked into, or has nothing to
  /// give, the process is gone afterwards and takes no more.
  WorkerAnswer await(std::chrono::milliseconds limit, int clients);

 private:
  DecodingProcess(pid_t child, FileDescriptor handle, FileDescriptor socket, FileOrigin origin)
      : child_(child), handle_(std::move(handle)), socket_(std::move(socket)), origin_(origin) {}
  /// Waits until it is, and has not looked into anything yet; false when it has ended before.
  bool isConfined() const;
  /// Kills it unless it has ended.
  void end();

  pid_t child_;            // 0 once it is gone
  FileDescriptor handle_;  // readable once it has ended
  FileDescriptor socket_;  // that it hears of more files through, and tells their ends
  FileOrigin origin_;
  unsigned files_ = 1;
};

}  // namespace vt::worker
