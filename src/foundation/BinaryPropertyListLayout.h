#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/PropertyListError.h"

namespace vt {

/// How the bytes of a binary property list are laid out: trailer, offset table, and where each
/// object's content lies. Whatever it hands out lies inside the file. The first error is kept;
/// every function that meets one answers nothing.
class BinaryPropertyListLayout {
 public:
  /// The high half of an object's first byte.
  enum Marker : std::uint8_t {
    kSimple = 0x0,
    kInteger = 0x1,
    kReal = 0x2,
    kDate = 0x3,
    kData = 0x4,
    kASCII = 0x5,
    kUTF16 = 0x6,
    kUID = 0x8,
    kArray = 0xA,
    kOrderedSet = 0xB,
    kSet = 0xC,
    kDictionary = 0xD,
  };

  /// An object's first byte and, for those that have one, its count.
  struct Head {
    std::uint8_t marker;
    std::uint8_t low;
    std::size_t content;  ///< offset of the bytes behind marker and count
    std::uint64_t count;
  };

  explicit BinaryPropertyListLayout(std::string_view bytes) : bytes_(bytes) {}

  /// Reads and checks header and trailer; the rest may be called only if this was true.
  bool readTrailer();

  std::string_view bytes() const { return bytes_; }
  std::size_t objectCount() const { return objectCount_; }
  std::uint64_t topObject() const { return topObject_; }

  /// Where the object called `reference` begins.
  std::optional<std::size_t> offsetOf(std::uint64_t reference);
  std::optional<Head> readHead(std::size_t offset);
  /// `size` bytes at `start` that belong to the object at `offset`; objects end before the table.
  std::optional<std::string_view> contentAt(std::size_t offset, std::size_t start,
                                            std::uint64_t size);
  /// `count` references behind each other, for referenceAt().
  std::optional<std::string_view> referencesAt(std::size_t offset, std::size_t start,
                                               std::uint64_t count);
  std::uint64_t referenceAt(std::string_view references, std::uint64_t index) const;

  /// Keeps the error unless there is one already; always nothing.
  std::nullopt_t fail(std::size_t offset, PropertyListErrorKind kind, std::string text);
  const std::optional<PropertyListError>& error() const { return error_; }

 private:
  const std::string_view bytes_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t objectCount_ = 0;
  std::uint64_t topObject_ = 0;
  std::uint64_t offsetTable_ = 0;
  std::optional<PropertyListError> error_;
};

/// The number that up to 8 bytes spell, highest first.
std::uint64_t bigEndianNumber(std::string_view bytes);

}  // namespace vt
