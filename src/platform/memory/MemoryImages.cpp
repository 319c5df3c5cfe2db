#include "platform/memory/MemoryImages.h"

#include <fmt/format.h>

#include "images/PngEncoder.h"

namespace vt {
namespace {

struct OpenedPath final : Images::Source {
  explicit OpenedPath(std::string openedPath) : path(std::move(openedPath)) {}

  std::string path;
};

Image square(std::uint32_t width, std::uint32_t height, std::string_view pixel) {
  Image image{width, height};
  for (std::size_t i = 0; i < std::size_t{width} * height; ++i) image.pixels += pixel;
  return image;
}

}  // namespace

Image MemoryImages::thumbnailOf(const ThumbnailSize& size) {
  return square(static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height),
                "\x20\x80\x20\xff");
}

Image MemoryImages::iconOf(std::int64_t pixels) {
  return square(static_cast<std::uint32_t>(pixels), static_cast<std::uint32_t>(pixels),
                "\x20\x20\x80\x80");
}

Result<std::unique_ptr<Images::Source>, Images::Refusal> MemoryImages::open(
    const std::string& path) {
  attempts_.push_back("open " + path);
  if (const auto found = refusals_.find(path); found != refusals_.end()) return found->second;
  return std::unique_ptr<Source>(std::make_unique<OpenedPath>(path));
}

std::optional<Image> MemoryImages::thumbnail(const Source& source, const ThumbnailSize& size) {
  const std::string& path = static_cast<const OpenedPath&>(source).path;
  attempts_.push_back(fmt::format("thumbnail {} {}x{}{}", path, size.width, size.height,
                                  size.iconMode ? " icon mode" : ""));
  if (!thumbnails_.contains(path)) return std::nullopt;
  return thumbnailOf(size);
}

std::optional<Image> MemoryImages::icon(const std::string& path, std::int64_t maxPixelSize) {
  attempts_.push_back(fmt::format("icon {} {}", path, maxPixelSize));
  if (!icons_.contains(path)) return std::nullopt;
  return iconOf(maxPixelSize);
}

std::optional<std::string> MemoryImages::png(const Image& image) {
  attempts_.emplace_back("png");
  return refusesPng_ ? std::nullopt : encodePng(image);
}

}  // namespace vt
