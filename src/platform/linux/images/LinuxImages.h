#pragma once

#include <memory>
#include <optional>
#include <string>

#include "images/ImageFormat.h"
#include "metadata/types/ContentTypes.h"
#include "platform/Images.h"
#include "platform/linux/images/FailedFiles.h"
#include "platform/linux/images/ImageWorker.h"
#include "platform/linux/worker/SettledWorker.h"

namespace vt {

/// Pictures made by a worker process, in which alone files are decoded. One thread at a time.
///
/// The worker is started with the first picture and kept. Behind which walls it decodes is settled
/// then: in bubblewrap's namespaces when they can be had, else behind Landlock and seccomp, else no
/// file is ever decoded and everything shows its icon. A file that no picture could be made of is
/// not tried again until it changes.
class LinuxImages final : public Images {
 public:
  struct Setup {
    /// The absolute path of the worker program; "" for the one of this installation.
    std::string program = {};
    /// The folder with the icons, "NAME.svg" for the type NAME. Absolute.
    std::string iconFolder = {};
    /// Which file is of which type. Without (nullptr) there are no pictures.
    std::shared_ptr<const ContentTypes> types = nullptr;
    /// What isAskedInProcess() answers.
    bool askedInProcess = true;
  };

  explicit LinuxImages(Setup setup);
  ~LinuxImages() override;

  bool isAskedInProcess() const override { return setup_.askedInProcess; }
  Result<std::unique_ptr<Source>, Refusal> open(const std::string& path) override;
  std::optional<Image> thumbnail(const Source& source, const ThumbnailSize& size) override;
  std::optional<Image> icon(const std::string& path, std::int64_t maxPixelSize) override;
  std::optional<std::string> png(const Image& image) override;

  /// Behind which walls files are decoded, as of worker::Wall; nothing when none are. Starts the
  /// worker.
  std::optional<std::uint32_t> walls();

 private:
  using WorkerOf = ImageWorker* (LinuxImages::*)();

  MadePicture makeBy(WorkerOf worker, int input, const worker::ImageRequest& request);
  ImageWorker* confinedWorker();
  ImageWorker* iconWorker();
  std::string iconFileOf(ContentTypeId type) const;

  Setup setup_;
  FailedFiles failed_;
  SettledWorker<ImageWorker> worker_;
  std::unique_ptr<ImageWorker> iconWorker_;  // only where nothing confines the other
};

}  // namespace vt
