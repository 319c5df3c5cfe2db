#pragma once

#include <cstdint>

namespace vt {

/// What a file is taken for when a picture is made of it. Never decided by the file's own content:
/// that only says whether it is what its name promises.
enum class ImageFormat : std::uint32_t {
  kPixels,    ///< JPEG, PNG, GIF, WebP, TIFF, HEIC or AVIF, whichever it is
  kSvg,       ///< drawn at the size asked for
  kPdf,       ///< its first page
  kText,      ///< as a page
  kSource,    ///< the same in a typewriter face
  kMarkdown,  ///< the same with its headings and emphasis
  kHtml,      ///< its text
  kPackage,   ///< a ZIP archive that holds a picture of itself: office documents, books
  kAudio,     ///< its cover
  kVideo,     ///< a frame
};

inline constexpr std::uint32_t kImageFormats = 10;

}  // namespace vt
