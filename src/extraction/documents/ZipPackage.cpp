#include "extraction/documents/ZipPackage.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>

#include "extraction/ReadFile.h"

namespace vt {
namespace {

constexpr std::size_t kBlockSize = 65536;

}  // namespace

ZipPackage::ZipPackage(int file) : archive_(::archive_read_new()) {
  if (archive_ && (::archive_read_support_format_zip(archive_) != ARCHIVE_OK ||
                   ::archive_read_open_fd(archive_, file, kBlockSize) != ARCHIVE_OK)) {
    ::archive_read_free(archive_);
    archive_ = nullptr;
  }
}

ZipPackage::~ZipPackage() {
  if (archive_) ::archive_read_free(archive_);
}

std::optional<std::string> ZipPackage::next() {
  archive_entry* entry = nullptr;
  if (!archive_ || isTooLarge_) return std::nullopt;
  const int result = ::archive_read_next_header(archive_, &entry);
  if (result != ARCHIVE_OK && result != ARCHIVE_WARN) return std::nullopt;
  if (++count_ > kMostEntries) {
    isTooLarge_ = true;
    return std::nullopt;
  }
  if (::archive_entry_is_encrypted(entry) != 0) isEncrypted_ = true;
  const char* name = ::archive_entry_pathname_utf8(entry);
  if (!name) name = ::archive_entry_pathname(entry);
  return name ? name : "";
}

bool ZipPackage::read(FunctionRef<bool(std::string_view)> take) {
  std::array<char, kBlockSize> block;
  for (;;) {
    const la_ssize_t count = ::archive_read_data(archive_, block.data(), block.size());
    if (count == 0) return true;
    if (count < 0) return false;
    unfolded_ += static_cast<std::uint64_t>(count);
    if (unfolded_ > kMostUnfolded) {
      isTooLarge_ = true;
      return false;
    }
    if (!take({block.data(), static_cast<std::size_t>(count)})) return true;
  }
}

std::string ZipPackage::beginning(std::size_t most) {
  std::string bytes;
  read([&](std::string_view piece) {
    bytes += piece.substr(0, most - bytes.size());
    return bytes.size() < most;
  });
  return bytes;
}

std::optional<ExtractionFailure> failureOf(const ZipPackage& package) {
  using Kind = ExtractionFailure::Kind;
  if (package.isTooLarge()) {
    return ExtractionFailure{Kind::kTooLarge, "it unfolds to more than 512 MiB or 20,000 parts"};
  }
  if (package.isEmpty()) return ExtractionFailure{Kind::kMalformed, "it is no ZIP archive"};
  return std::nullopt;
}

bool startsWith(int file, std::string_view bytes) {
  const Result<std::string, ExtractionFailure> start = readFileStart(file, bytes.size());
  return start && *start == bytes;
}

}  // namespace vt
