#pragma once

#include <array>
#include <chrono>
#include <cstddef>
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

/// The process that looks into files, running while this object lives.
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

  /// A file that it was asked to look into.
  struct Asked {
    FileDescriptor pipe;       ///< the end that what it finds comes through
    std::uint64_t number = 0;  ///< of the request
  };
  /// Has it look into the open file `input`, from its start, once it has done so with those that it
  /// was asked for before. Nothing when the worker is not usable.
  std::optional<Asked> ask(int input, const worker::WorkerRequest& request);

  /// How looking into the file of that request ended, which must be one of the last kMostKept. When
  /// nothing is heard of it until `deadline`, the worker is no longer usable.
  worker::WorkerAnswer awaitEnd(std::uint64_t number,
                                std::chrono::steady_clock::time_point deadline);

  /// Whether awaitEnd() need not wait.
  bool hasEnded(std::uint64_t number);

  /// Of so many requests it is known how they ended, or is still to be heard.
  static constexpr std::size_t kMostKept = 16;

 private:
  WorkerProcess(std::unique_ptr<ChildProcess> process, FileDescriptor socket, std::uint32_t walls)
      : process_(std::move(process)), socket_(std::move(socket)), walls_(walls) {}
  void takeAnswersThatHaveCome();
  /// Takes the next answer; false when none comes before `deadline`.
  bool takeAnswer(std::chrono::steady_clock::time_point deadline);

  std::unique_ptr<ChildProcess> process_;
  FileDescriptor socket_;
  std::uint32_t walls_;
  bool isUsable_ = true;
  std::uint64_t asked_ = 0;     // requests, which have the numbers from 0 on
  std::uint64_t answered_ = 0;  // of them
  std::array<worker::WorkerAnswer, kMostKept> answers_;  // the last ones, by number
};

}  // namespace vt
