#include "images/worker/PackageDecoder.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "images/worker/PixelDecoder.h"

namespace vt::worker {
namespace {

constexpr int kMostEntries = 10'000;
constexpr std::size_t kMostBytes = std::size_t{64} << 20;
constexpr std::size_t kBlockSize = 65536;

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

/// Whether the entry `name`, in lower case, is a picture of the document.
bool isPictureOfDocument(std::string_view name) {
  static constexpr std::array<std::string_view, 9> kNames = {"docprops/thumbnail.jpeg",
                                                             "docprops/thumbnail.jpg",
                                                             "docprops/thumbnail.png",
                                                             "thumbnails/thumbnail.png",
                                                             "quicklook/thumbnail.jpg",
                                                             "quicklook/thumbnail.png",
                                                             "preview.jpg",
                                                             "preview.png",
                                                             "thumbnail.png"};
  if (std::ranges::find(kNames, name) != kNames.end()) return true;
  // Of a book, wherever its maker put it.
  const std::string_view file = name.substr(name.rfind('/') + 1);
  return file == "cover.jpg" || file == "cover.jpeg" || file == "cover.png";
}

/// The entry's content; "" when it is larger than any picture of a document should be.
std::string contentOf(archive* zip) {
  std::string bytes;
  std::array<char, kBlockSize> block;
  for (;;) {
    const la_ssize_t count = archive_read_data(zip, block.data(), block.size());
    if (count < 0 || bytes.size() + static_cast<std::size_t>(count) > kMostBytes) return "";
    if (count == 0) return bytes;
    bytes.append(block.data(), static_cast<std::size_t>(count));
  }
}

}  // namespace

std::optional<Image> decodePackage(const DecodeJob& job) {
  const std::unique_ptr<archive, decltype(&archive_read_free)> zip(archive_read_new(),
                                                                   archive_read_free);
  if (!zip || archive_read_support_format_zip(zip.get()) != ARCHIVE_OK ||
      archive_read_open_fd(zip.get(), job.descriptor, kBlockSize) != ARCHIVE_OK) {
    return std::nullopt;
  }
  archive_entry* entry = nullptr;
  for (int i = 0; i < kMostEntries; ++i) {
    if (archive_read_next_header(zip.get(), &entry) != ARCHIVE_OK) return std::nullopt;
    const char* name = archive_entry_pathname(entry);
    if (!name || !isPictureOfDocument(lowerCase(name))) continue;
    if (auto image = decodePixelsIn(contentOf(zip.get()), {job.width, job.height})) return image;
  }
  return std::nullopt;
}

}  // namespace vt::worker
