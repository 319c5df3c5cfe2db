#include "platform/linux/images/LinuxImages.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string_view>
#include <utility>

#include "images/PngEncoder.h"
#include "platform/linux/images/ContentFormat.h"

namespace vt {
namespace {

struct OpenedFile final : Images::Source {
  OpenedFile(FileDescriptor opened, const struct stat& itsStatus, std::optional<ImageFormat> its)
      : file(std::move(opened)), status(itsStatus), format(its) {}

  FileDescriptor file;
  struct stat status;
  std::optional<ImageFormat> format;
};

std::string_view nameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

FileDescriptor openToRead(const std::string& path) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const int descriptor = ::open(path.c_str(), kFlags | O_NOATIME);
  // Only its owner may leave a file's access time alone.
  if (descriptor < 0 && errno == EPERM) return FileDescriptor(::open(path.c_str(), kFlags));
  return FileDescriptor(descriptor);
}

Images::Refusal refusalOf(int error) {
  return error == EACCES || error == EPERM ? Images::Refusal::kForbidden
                                           : Images::Refusal::kNoContent;
}

/// A side of a picture; nothing for one that is too short or too long, or no number.
std::optional<std::uint32_t> sideOf(double length) {
  if (!(length >= 1 && length <= static_cast<double>(Images::kMostPixels))) return std::nullopt;
  return static_cast<std::uint32_t>(length);
}

}  // namespace

LinuxImages::LinuxImages(Setup setup) : setup_(std::move(setup)) {
  if (setup_.program.empty()) setup_.program = VT_IMAGE_WORKER;
}

LinuxImages::~LinuxImages() = default;

Result<std::unique_ptr<Images::Source>, Images::Refusal> LinuxImages::open(
    const std::string& path) {
  struct stat status{};
  // Opening a device or a pipe may do something; whoever swaps a file for one right now gains
  // nothing by it.
  if (path.find('\0') != path.npos) return Refusal::kNoContent;
  if (::stat(path.c_str(), &status) != 0) return refusalOf(errno);
  if (!S_ISREG(status.st_mode)) return Refusal::kNoContent;
  FileDescriptor file = openToRead(path);
  if (!file) return refusalOf(errno);
  if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return Refusal::kNoContent;
  std::optional<ImageFormat> format;
  if (setup_.types) format = formatOf(*setup_.types, setup_.types->typeOfFile(nameOf(path)));
  return std::unique_ptr<Source>(std::make_unique<OpenedFile>(std::move(file), status, format));
}

std::optional<Image> LinuxImages::thumbnail(const Source& source, const ThumbnailSize& size) {
  const auto& opened = static_cast<const OpenedFile&>(source);
  const std::optional<std::uint32_t> width = sideOf(size.width);
  const std::optional<std::uint32_t> height = sideOf(size.height);
  if (!opened.format || !width || !height || opened.status.st_size == 0 ||
      failed_.contains(opened.status)) {
    return std::nullopt;
  }
  MadePicture made = makeBy(&LinuxImages::confinedWorker, opened.file.get(),
                            {*opened.format, *width, *height, size.iconMode ? 1U : 0U});
  if (!made.image && made.isFinal) failed_.add(opened.status);
  return std::move(made.image);
}

std::optional<Image> LinuxImages::icon(const std::string& path, std::int64_t maxPixelSize) {
  struct stat status{};
  if (!setup_.types || maxPixelSize < 1 || maxPixelSize > kMostPixels ||
      ::stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  const ContentTypes& types = *setup_.types;
  const ContentTypeId type = S_ISDIR(status.st_mode)   ? types.typeOfFolder(nameOf(path))
                             : S_ISREG(status.st_mode) ? types.typeOfFile(nameOf(path))
                                                       : types.typeOfSpecialFile();
  const FileDescriptor file(::open(iconFileOf(type).c_str(), O_RDONLY | O_CLOEXEC));
  if (!file) return std::nullopt;
  const auto side = static_cast<std::uint32_t>(maxPixelSize);
  return makeBy(&LinuxImages::iconWorker, file.get(),
                {ImageFormat::kSvg, side, side, /*iconMode=*/1})
      .image;
}

std::optional<std::string> LinuxImages::png(const Image& image) { return encodePng(image); }

std::optional<std::uint32_t> LinuxImages::walls() {
  const ImageWorker* worker = confinedWorker();
  return worker ? std::optional(worker->walls()) : std::nullopt;
}

MadePicture LinuxImages::makeBy(WorkerOf worker, int input, const worker::ImageRequest& request) {
  MadePicture made{std::nullopt, /*isFinal=*/false};
  // A worker that has ended since it was last asked is no fault of the file: another is asked.
  constexpr int kAttempts = 2;
  for (int i = 0; i < kAttempts && !made.image && !made.isFinal; ++i) {
    ImageWorker* asked = (this->*worker)();
    if (!asked) break;
    made = asked->make(input, request);
  }
  return made;
}

ImageWorker* LinuxImages::confinedWorker() {
  return worker_.running([this](WorkerConfinement confinement) {
    return ImageWorker::start(setup_.program, confinement);
  });
}

ImageWorker* LinuxImages::iconWorker() {
  if (ImageWorker* worker = confinedWorker()) return worker;
  if (!iconWorker_ || !iconWorker_->isUsable()) {
    iconWorker_ = ImageWorker::start(setup_.program, WorkerConfinement::kOwnFilesOnly);
  }
  return iconWorker_.get();
}

std::string LinuxImages::iconFileOf(ContentTypeId type) const {
  for (const ContentTypeId each : (*setup_.types)[type].tree) {
    std::string file =
        fmt::format("{}/{}.svg", setup_.iconFolder, (*setup_.types)[each].identifier);
    if (::access(file.c_str(), R_OK) == 0) return file;
  }
  // Not every type conforms to it.
  return setup_.iconFolder + "/public.item.svg";
}

}  // namespace vt
