#include "foundation/BinaryPropertyListLayout.h"

#include <fmt/format.h>

#include <utility>

namespace vt {
namespace {

using Kind = PropertyListErrorKind;

constexpr std::string_view kMagic = "bplist";
constexpr std::string_view kHeader = "bplist00";
constexpr std::size_t kTrailerSize = 32;

}  // namespace

std::uint64_t bigEndianNumber(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char c : bytes) number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

std::nullopt_t BinaryPropertyListLayout::fail(std::size_t offset, Kind kind, std::string text) {
  if (!error_) error_ = {kind, offset, 0, std::move(text)};
  return std::nullopt;
}

bool BinaryPropertyListLayout::readTrailer() {
  if (!bytes_.starts_with(kHeader)) {
    const bool isOther = bytes_.starts_with(kMagic) && bytes_.size() >= kHeader.size();
    if (isOther) {
      fail(kMagic.size(), Kind::kUnsupported,
           fmt::format("version {} of the binary format",
                       quotedPiece(bytes_.substr(kMagic.size(), 2))));
    } else if (kHeader.starts_with(bytes_)) {
      fail(bytes_.size(), Kind::kTruncated, "the file ends in its header");
    } else {
      fail(0, Kind::kSyntax, "no \"bplist00\" at the beginning");
    }
    return false;
  }
  if (bytes_.size() < kHeader.size() + 2 + kTrailerSize) {
    fail(bytes_.size(), Kind::kTruncated, "too short for an object, its offset and the trailer");
    return false;
  }
  const std::size_t trailer = bytes_.size() - kTrailerSize;
  offsetSize_ = static_cast<unsigned char>(bytes_[trailer + 6]);
  referenceSize_ = static_cast<unsigned char>(bytes_[trailer + 7]);
  objectCount_ = bigEndianNumber(bytes_.substr(trailer + 8, 8));
  topObject_ = bigEndianNumber(bytes_.substr(trailer + 16, 8));
  offsetTable_ = bigEndianNumber(bytes_.substr(trailer + 24, 8));
  if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) {
    fail(trailer + 6, Kind::kSyntax,
         fmt::format("offsets of {} and references of {} bytes", offsetSize_, referenceSize_));
    return false;
  }
  if (offsetTable_ <= kHeader.size() || offsetTable_ >= trailer) {
    fail(trailer + 24, Kind::kSyntax, fmt::format("offset table at {}", offsetTable_));
    return false;
  }
  // No slack: a file cut short or run together with another must not pass for a whole one.
  const std::size_t tableSize = trailer - offsetTable_;
  if (tableSize % offsetSize_ != 0 || objectCount_ != tableSize / offsetSize_) {
    fail(trailer + 8, Kind::kSyntax,
         fmt::format("{} objects, but an offset table of {} bytes", objectCount_, tableSize));
    return false;
  }
  return true;
}

std::optional<std::size_t> BinaryPropertyListLayout::offsetOf(std::uint64_t reference) {
  if (reference >= objectCount_) {
    return fail(offsetTable_, Kind::kSyntax,
                fmt::format("reference to object {} of {}", reference, objectCount_));
  }
  const std::size_t entry = offsetTable_ + reference * offsetSize_;
  const std::uint64_t offset = bigEndianNumber(bytes_.substr(entry, offsetSize_));
  if (offset < kHeader.size() || offset >= offsetTable_) {
    return fail(entry, Kind::kSyntax, fmt::format("object {} at offset {}", reference, offset));
  }
  return offset;
}

std::optional<BinaryPropertyListLayout::Head> BinaryPropertyListLayout::readHead(
    std::size_t offset) {
  const auto byte = static_cast<unsigned char>(bytes_[offset]);
  Head head{static_cast<std::uint8_t>(byte >> 4), static_cast<std::uint8_t>(byte & 0xF), offset + 1,
            static_cast<std::uint64_t>(byte & 0xF)};
  const bool hasCount = head.marker == kData || head.marker == kASCII || head.marker == kUTF16 ||
                        head.marker == kArray || head.marker == kDictionary;
  if (!hasCount || head.low != 0xF) return head;
  // 15 and more: the count follows as an integer object.
  const std::optional<std::string_view> marker = contentAt(offset, head.content, 1);
  if (!marker) return std::nullopt;
  const auto countMarker = static_cast<unsigned char>(marker->front());
  if (countMarker >> 4 != kInteger || (countMarker & 0xF) > 3) {
    return fail(head.content, Kind::kSyntax, "a count that is no integer");
  }
  const std::size_t size = std::size_t{1} << (countMarker & 0xF);
  const std::optional<std::string_view> number = contentAt(offset, head.content + 1, size);
  if (!number) return std::nullopt;
  head.content += 1 + size;
  head.count = bigEndianNumber(*number);
  return head;
}

std::optional<std::string_view> BinaryPropertyListLayout::contentAt(std::size_t offset,
                                                                    std::size_t start,
                                                                    std::uint64_t size) {
  if (start > offsetTable_ || size > offsetTable_ - start) {
    return fail(offset, Kind::kSyntax,
                fmt::format("an object of {} bytes that ends behind the last one", size));
  }
  return bytes_.substr(start, size);
}

std::optional<std::string_view> BinaryPropertyListLayout::referencesAt(std::size_t offset,
                                                                       std::size_t start,
                                                                       std::uint64_t count) {
  if (count > bytes_.size()) return contentAt(offset, start, count);  // fails; no product overflows
  return contentAt(offset, start, count * referenceSize_);
}

std::uint64_t BinaryPropertyListLayout::referenceAt(std::string_view references,
                                                    std::uint64_t index) const {
  return bigEndianNumber(references.substr(index * referenceSize_, referenceSize_));
}

}  // namespace vt
