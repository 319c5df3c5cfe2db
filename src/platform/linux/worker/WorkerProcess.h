#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/ChildProcess.h"
#include "platform/linux/FileDescriptor.h"
#include "worker/WorkerProtocol.h"

namespace vt {

/// How a worker is started.
enum class WorkerConfinement {
  kBubblewrap,    ///< in namespaces made by bubblewrap, behind the worker's own walls
  kOwnWalls,      ///< behind Landlock and seccomp, which the worker raises
  kOwnFilesOnly,  ///< behind whatever can be raised; it then looks into no file but our own
};

/// The process that looks into files, running while this object lives. One request at a time.
class WorkerProcess {
 public:
  /// A worker ends a file by itself after its own limit.
  static constexpr std::chrono::seconds kAnswerLimit = worker::kFileLimit + std::chrono::seconds(5);

  /// Starts the program at the absolute path `program` and waits until it is ready. `first` is sent
  /// to it before it raises its walls, unless it is -1: an open file. Nullptr when it cannot be
  /// started, or the walls that it is to stand behind cannot be raised here.
  static std::unique_ptr<WorkerProcess> start(const std::string& program,
                                              WorkerConfinement confinement, int first = -1);

  /// The walls that stand, as of worker::Wall.
  std::uint32_t walls() const { return walls_; }
  /// False once it has ended, or did not keep to what was agreed. It must then be given up.
  bool isUsable() const { return isUsable_; }

  /// Has it look into the open file `input`, from its start. Gives the end of the pipe that what it
  /// finds comes through; nothing when the worker is not usable. Waits for the last file's end.
  std::optional<FileDescriptor> ask(int input, const worker::WorkerRequest& request);

  /// How the last file ended, which is asked for once. When nothing is heard of it until
  /// `deadline`, the worker is no longer usable.
  worker::WorkerEnd awaitEnd(std::chrono::steady_clock::time_point deadline);

 private:
  WorkerProcess(std::unique_ptr<ChildProcess> process, FileDescriptor socket, std::uint32_t walls)
      : process_(std::move(process)), socket_(std::move(socket)), walls_(walls) {}

  std::unique_ptr<ChildProcess> process_;
  FileDescriptor socket_;
  std::uint32_t walls_;
  bool isUsable_ = true;
  bool owesAnswer_ = false;  // to the last request
};

}  // namespace vt
