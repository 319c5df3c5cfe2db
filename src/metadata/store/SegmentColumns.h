#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "foundation/Date.h"
#include "metadata/rights/AccessJudge.h"
#include "metadata/rights/AclReader.h"
#include "metadata/store/TextColumn.h"

namespace vt {

/// No folder: what "/" has for a parent, and what a row that is no folder is.
inline constexpr std::uint32_t kNoFolder = std::numeric_limits<std::uint32_t>::max();

/// No row: what a folder has that was not found as an entry of another, as roots are.
inline constexpr std::uint32_t kNoRow = std::numeric_limits<std::uint32_t>::max();

/// A number of microseconds that is no date: of a file system that keeps no birth time.
inline constexpr std::int64_t kNoDate = std::numeric_limits<std::int64_t>::min();

/// Allocated space is counted in blocks, as file systems tell it.
inline constexpr std::uint64_t kAllocationBlockBytes = 512;
/// A number of blocks that says: look the row up among the few whose space is told in bytes.
inline constexpr std::uint32_t kNotInBlocks = std::numeric_limits<std::uint32_t>::max();

/// What every file of a class has in common: whose it is and who may do what with it.
struct AccessClass {
  FileOwnership ownership;
  const AclReading& acl;
};

/// The access classes of a segment, borrowed column by column: nothing is made for those, mostly
/// all, that have no list.
class ClassColumns {
 public:
  /// What is known of the lists of a segment. The classes that have one are `listed`, ascending.
  struct Lists {
    AclReading none{true, std::nullopt};
    AclReading unknown;
    std::vector<std::uint32_t> listed;
    std::vector<AclReading> readings;  ///< like `listed`
  };

  ClassColumns() = default;
  /// All of one length; `lists` must outlive this.
  ClassColumns(std::span<const std::uint32_t> uids, std::span<const std::uint32_t> gids,
               std::span<const std::uint32_t> modes, std::span<const std::uint8_t> presences,
               const Lists& lists)
      : uids_(uids), gids_(gids), modes_(modes), presences_(presences), lists_(&lists) {}

  std::size_t size() const { return uids_.size(); }
  bool empty() const { return uids_.empty(); }
  AccessClass operator[](std::size_t number) const {
    return {{uids_[number], gids_[number], modes_[number]}, aclOf(number)};
  }

 private:
  const AclReading& aclOf(std::size_t number) const {
    if (presences_[number] < static_cast<std::uint8_t>(AclPresence::kPresent)) return lists_->none;
    return listOf(number);
  }
  const AclReading& listOf(std::size_t number) const;

  std::span<const std::uint32_t> uids_;
  std::span<const std::uint32_t> gids_;
  std::span<const std::uint32_t> modes_;
  std::span<const std::uint8_t> presences_;  // AclPresence
  const Lists* lists_ = nullptr;
};

/// What the engine reads of a segment: columns of numbers and texts, borrowed from whoever has the
/// segment open. All columns of rows are of one length, and all of folders. Folders, classes and
/// types may be those of a newer segment that goes on from this one.
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
  std::span<const std::uint32_t> allocatedBlocks;
  std::span<const std::uint16_t> types;
  std::span<const std::uint32_t> folders;  ///< see folderOf()
  std::span<const std::uint32_t> accessClasses;

  // Rows whose allocated space is no number of blocks below kNotInBlocks, ascending; and the space.
  std::span<const std::uint32_t> oddlyAllocatedRows;
  std::span<const std::uint64_t> oddAllocations;

  // By folder: "/" first, each after its parent.
  TextColumn folderNames;
  std::span<const std::uint32_t> parents;
  std::span<const std::uint32_t> folderAccessClasses;
  std::span<const std::uint32_t> entryCounts;
  /// Folders that were asked to be indexed, and those that were listed without failure.
  std::span<const std::uint8_t> areRoots;
  std::span<const std::uint8_t> areListed;

  // Which row a folder is, kNoRow for what is none of these; and the folders that are rows, in the
  // order of those. Here folders have the numbers of the column `folders`.
  std::span<const std::uint32_t> folderRows;
  std::span<const std::uint32_t> foldersByRow;

  /// What the folders that rows name are called in the columns by folder, where these are newer
  /// than the rows; empty where they are not.
  std::span<const std::uint32_t> folderNumbers;

  ClassColumns classes;
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
  std::uint64_t allocatedBytesOf(std::size_t row) const {
    const std::uint32_t blocks = allocatedBlocks[row];
    return blocks != kNotInBlocks ? blocks * kAllocationBlockBytes : oddAllocationOf(row);
  }
  std::uint32_t typeOf(std::size_t row) const { return within(types[row], typeIdentifiers.size()); }
  std::uint32_t folderOf(std::size_t row) const { return folderNumbered(folders[row]); }
  /// The folder that rows name by `number`.
  std::uint32_t folderNumbered(std::uint32_t number) const {
    if (folderNumbers.empty()) return within(number, parents.size());
    return number < folderNumbers.size() ? within(folderNumbers[number], parents.size()) : 0;
  }
  std::uint32_t classOf(std::size_t row) const {
    return within(accessClasses[row], classes.size());
  }
  std::uint32_t classOfFolder(std::uint32_t folder) const {
    return within(folderAccessClasses[folder], classes.size());
  }
  /// The folder that the row is; kNoFolder for another file. Costs a binary search if it is one.
  std::uint32_t ownFolderOf(std::size_t row) const;

 private:
  static Date dateOf(std::int64_t microseconds) {
    return Date{std::chrono::microseconds{microseconds}};
  }
  static std::uint32_t within(std::uint32_t number, std::size_t count) {
    return number < count ? number : 0;
  }
  std::uint64_t oddAllocationOf(std::size_t row) const;
};

}  // namespace vt
