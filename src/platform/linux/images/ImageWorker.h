#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "images/worker/WorkerProtocol.h"
#include "platform/Image.h"
#include "platform/linux/ChildProcess.h"
#include "platform/linux/FileDescriptor.h"

namespace vt {

/// How a worker is started.
enum class WorkerConfinement {
  kBubblewrap,  ///< in namespaces made by bubblewrap, behind the worker's own walls
  kOwnWalls,    ///< behind Landlock and seccomp, which the worker raises
  kIconsOnly,   ///< behind whatever can be raised; it then draws our own icons and nothing else
};

/// What became of one request.
struct MadePicture {
  std::optional<Image> image;
  /// Whether asking again for the same file is in vain until it changes.
  bool isFinal = true;
};

/// The process that decodes files, running while this object lives. One request at a time.
class ImageWorker {
 public:
  /// Starts the program at the absolute path `program` and waits until it is ready. Nullptr when
  /// it cannot be started, or the walls that it is to stand behind cannot be raised here.
  static std::unique_ptr<ImageWorker> start(const std::string& program,
                                            WorkerConfinement confinement);

  /// The walls that stand, as of worker::Wall.
  std::uint32_t walls() const { return walls_; }
  /// False once it has ended, or did not keep to what was agreed. It must then be given up.
  bool isUsable() const { return isUsable_; }

  /// Has a picture made of the open file `input`. None when the file has none, is damaged, took
  /// too long, or the worker is not usable.
  MadePicture make(int input, const worker::ImageRequest& request);

 private:
  ImageWorker(std::unique_ptr<ChildProcess> process, FileDescriptor socket, std::uint32_t walls)
      : process_(std::move(process)), socket_(std::move(socket)), walls_(walls) {}

  /// How the last decoder ended. When nothing is heard of it, the worker is no longer usable.
  worker::ImageEnd awaitAnswer(std::chrono::steady_clock::time_point deadline);

  std::unique_ptr<ChildProcess> process_;
  FileDescriptor socket_;
  std::uint32_t walls_;
  bool isUsable_ = true;
  bool owesAnswer_ = false;  // to the last request
};

}  // namespace vt
