#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>

#include "foundation/Date.h"
#include "metadata/rights/AccessJudge.h"

namespace vt {

/// No folder: what "/" has for a parent, and what a row that is no folder is.
inline constexpr std::uint32_t kNoFolder = std::numeric_limits<std::uint32_t>::max();

/// A number of microseconds that is no date: of a file system that keeps no birth time.
inline constexpr std::int64_t kNoDate = std::numeric_limits<std::int64_t>::min();

/// What every file of a class has in common: whose it is and who may do what with it.
struct AccessClass {
  FileOwnership ownership;
  AclReading acl;
};

/// Texts one after the other, each ended by a byte that is in none: text n is from offset n to
/// before the byte that ends it, so there is one offset more than texts.
class TextColumn {
 public:
  TextColumn() = default;
  TextColumn(std::string_view text, std::span<const std::uint32_t> offsets)
      : text_(text), offsets_(offsets) {}

  std::string_view text() const { return text_; }
  /// Where text `number` begins; the end of the whole for a number beyond the last.
  std::size_t offsetOf(std::size_t number) const {
    if (number >= offsets_.size()) return text_.size();
    return offsets_[number] < text_.size() ? offsets_[number] : text_.size();
  }
  std::string_view operator[](std::size_t number) const {
    const std::size_t first = offsetOf(number);
    const std::size_t end = offsetOf(number + 1);
    return text_.substr(first, end > first ? end - first - 1 : 0);
  }
  /// Has the processor fetch where text `number` begins, or its first bytes. Any number will do.
  void prefetchOffset(std::size_t number) const {
    __builtin_prefetch(offsets_.data() + std::min(number, offsets_.size()));
  }
  void prefetchText(std::size_t number) const {
    __builtin_prefetch(text_.data() + offsetOf(number));
  }
  /// The number of the text that holds the byte at `offset`, which is not before text `from`.
  /// Costs the logarithm of how many texts are between.
  std::size_t numberAt(std::size_t offset, std::size_t from) const;

 private:
  std::string_view text_;
  std::span<const std::uint32_t> offsets_;
};

/// What the engine reads of a segment: columns of numbers and texts, borrowed from whoever has the
/// segment open. All columns of rows are of one length, and all of folders.
///
/// There is a class and a type when there are rows. Numbers that a damaged file gives are looked up
/// only where something is: they give wrong answers at worst.
struct SegmentColumns {
  // By row, newest modification first, equal ones by the bytes of their canonical paths. Dates are
  // microseconds since 1970.
  TextColumn foldedNames;  ///< by case and marks
  /// Names as they are where they differ from the folded ones; "" where they do not.
  TextColumn otherNames;
  std::span<const std::int64_t> modified;
  std::span<const std::int64_t> created;
  std::span<const std::int64_t> attributesChanged;
  std::span<const std::int64_t> accessed;
  std::span<const std::uint64_t> sizes;
  std::span<const std::uint64_t> allocated;
  std::span<const std::uint16_t> types;
  std::span<const std::uint32_t> folders;
  std::span<const std::uint32_t> accessClasses;
  std::span<const std::uint32_t> ownFolders;  ///< kNoFolder for what is no folder

  // By folder: "/" first, each after its parent.
  TextColumn folderNames;
  std::span<const std::uint32_t> parents;
  std::span<const std::uint32_t> folderAccessClasses;
  std::span<const std::uint32_t> entryCounts;
  /// Folders that were asked to be indexed, and those that were listed without failure.
  std::span<const std::uint8_t> areRoots;
  std::span<const std::uint8_t> areListed;

  std::span<const AccessClass> classes;
  std::span<const std::string_view> typeIdentifiers;

  std::size_t rowCount() const { return modified.size(); }
  std::uint32_t folderCount() const { return static_cast<std::uint32_t>(parents.size()); }

  std::string_view name(std::size_t row) const {
    const std::string_view other = otherNames[row];
    return other.empty() ? foldedNames[row] : other;
  }
  Date modifiedOf(std::size_t row) const { return dateOf(modified[row]); }
  std::optional<Date> createdOf(std::size_t row) const {
    if (created[row] == kNoDate) return std::nullopt;
    return dateOf(created[row]);
  }
  Date attributesChangedOf(std::size_t row) const { return dateOf(attributesChanged[row]); }
  Date accessedOf(std::size_t row) const { return dateOf(accessed[row]); }
  std::uint32_t typeOf(std::size_t row) const { return within(types[row], typeIdentifiers.size()); }
  std::uint32_t folderOf(std::size_t row) const { return within(folders[row], parents.size()); }
  std::uint32_t classOf(std::size_t row) const {
    return within(accessClasses[row], classes.size());
  }
  std::uint32_t classOfFolder(std::uint32_t folder) const {
    return within(folderAccessClasses[folder], classes.size());
  }
  std::uint32_t ownFolderOf(std::size_t row) const {
    return ownFolders[row] < parents.size() ? ownFolders[row] : kNoFolder;
  }

 private:
  static Date dateOf(std::int64_t microseconds) {
    return Date{std::chrono::microseconds{microseconds}};
  }
  static std::uint32_t within(std::uint32_t number, std::size_t count) {
    return number < count ? number : 0;
  }
};

}  // namespace vt
