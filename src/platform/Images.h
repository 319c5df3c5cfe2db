#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "foundation/Result.h"
#include "platform/Image.h"

namespace vt {

/// How large a thumbnail is to be, in pixels, and what for.
struct ThumbnailSize {
  double width = 0;
  double height = 0;
  bool iconMode = false;  ///< to stand for the file, rather than to be looked at

  friend bool operator==(const ThumbnailSize&, const ThumbnailSize&) = default;
};

/// What makes pictures of files: thumbnails of their content, icons of their type.
class Images {
 public:
  /// A file whose content is looked at, open until this goes.
  class Source {
   public:
    virtual ~Source() = default;
  };

  /// Why a file was not opened.
  enum class Refusal {
    kForbidden,  ///< the calling thread may not read it
    kNoContent,  ///< missing, a folder, a device, or otherwise nothing to make a thumbnail of
  };

  virtual ~Images() = default;

  /// Whether thumbnails are asked for by thumbnail(); else by the external tool kThumbnailTool.
  virtual bool isAskedInProcess() const = 0;

  /// Opens the file at the absolute path `path` (bytes), links followed, with the rights that the
  /// calling thread has now. Only regular files are ever opened. What is made of the file later
  /// needs no rights any more.
  virtual Result<std::unique_ptr<Source>, Refusal> open(const std::string& path) = 0;

  /// A picture of the content that fits into the size, and is never larger than the content.
  /// Nothing for content of no known format, damaged content, and a size below 1 or above
  /// kMostPixels.
  virtual std::optional<Image> thumbnail(const Source& source, const ThumbnailSize& size) = 0;

  /// The icon that a file at `path` has by its type, at most `maxPixelSize` wide and high. Nothing
  /// when there is no such file or nobody can draw.
  virtual std::optional<Image> icon(const std::string& path, std::int64_t maxPixelSize) = 0;

  /// The image as the bytes of a PNG file that holds nothing else. Nothing when it is not whole.
  virtual std::optional<std::string> png(const Image& image) = 0;

  /// The longest side of anything that is drawn.
  static constexpr std::int64_t kMostPixels = 4096;
};

}  // namespace vt
