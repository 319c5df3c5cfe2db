#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "images/worker/ImageRequest.h"
#include "platform/Image.h"
#include "platform/linux/worker/WorkerProcess.h"

namespace vt {

/// What became of one request.
struct MadePicture {
  std::optional<Image> image;
  /// Whether asking again for the same file is in vain until it changes.
  bool isFinal = true;
};

/// The process that decodes files, running while this object lives. One request at a time.
class ImageWorker {
 public:
  /// See WorkerProcess::start(). One for its own files draws our icons and nothing else.
  static std::unique_ptr<ImageWorker> start(const std::string& program,
                                            WorkerConfinement confinement);

  /// The walls that stand, as of worker::Wall.
  std::uint32_t walls() const { return process_->walls(); }
  /// False once it has ended, or did not keep to what was agreed. It must then be given up.
  bool isUsable() const { return process_->isUsable(); }

  /// Has a picture made of the open file `input`. None when the file has none, is damaged, took
  /// too long, or the worker is not usable.
  MadePicture make(int input, const worker::ImageRequest& request);

 private:
  explicit ImageWorker(std::unique_ptr<WorkerProcess> process) : process_(std::move(process)) {}

  std::unique_ptr<WorkerProcess> process_;
};

}  // namespace vt
