#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

// How a segment file is laid out; docs/index-format.md tells why.

namespace vt {

// Numbers are little endian in the file and used where they lie.
static_assert(std::endian::native == std::endian::little);

inline constexpr std::uint32_t kSegmentFormatVersion = 2;

// The end of line in it shows a copy that took the file for text.
inline constexpr std::array<char, 8> kSegmentMagic = {'V', 'T', 'S', 'e', 'g', 'm', '\r', '\n'};

/// Columns begin at multiples of this: a cache line.
inline constexpr std::uint64_t kColumnAlignment = 64;

/// The columns of a segment, in the order in which they lie in the file.
enum class ColumnId : std::uint32_t {
  // By row.
  kFoldedNames,
  kFoldedNameOffsets,
  kOtherNames,
  kOtherNameOffsets,
  kModified,
  kCreated,
  kAttributesChanged,
  kAccessed,
  kSizes,
  kAllocatedBlocks,
  kTypes,
  kFolders,
  kAccessClasses,
  kOddlyAllocatedRows,
  kOddAllocations,
  // By folder.
  kFolderNames,
  kFolderNameOffsets,
  kParents,
  kFolderAccessClasses,
  kEntryCounts,
  kAreRoots,
  kAreListed,
  kFolderRows,
  kFolderDevices,
  kFolderInodes,
  kFolderModified,
  kFolderAttributesChanged,
  kFoldersByRow,
  // By access class.
  kClassUids,
  kClassGids,
  kClassModes,
  kClassAclPresences,
  kClassAcls,
  kClassAclOffsets,
  // By type.
  kTypeIdentifiers,
  kTypeIdentifierOffsets,
  // Of a delta: by folder of the base, and by row of it.
  kBaseFolders,
  kDeadRows,
};
inline constexpr std::size_t kColumnCount = static_cast<std::size_t>(ColumnId::kDeadRows) + 1;

/// Where a column lies.
struct ColumnPlace {
  std::uint64_t offset = 0;
  std::uint64_t bytes = 0;
  std::uint64_t checksum = 0;  ///< XXH3, 64 bits
};

/// The beginning of a segment file.
struct SegmentHead {
  std::array<char, 8> magic = kSegmentMagic;
  std::uint32_t version = kSegmentFormatVersion;
  std::uint32_t columnCount = kColumnCount;
  std::uint64_t generation = 0;
  std::uint64_t fileBytes = 0;
  std::uint32_t rowCount = 0;
  std::uint32_t folderCount = 0;
  std::uint32_t classCount = 0;
  std::uint32_t typeCount = 0;
  // Of a delta: the segment that it belongs to. 0 in a base.
  std::uint64_t baseBytes = 0;
  std::uint64_t baseHeadChecksum = 0;
  std::array<ColumnPlace, kColumnCount> columns;
  std::uint64_t checksum = 0;  ///< of all before it
};

constexpr std::uint64_t alignedForColumn(std::uint64_t offset) {
  return (offset + kColumnAlignment - 1) / kColumnAlignment * kColumnAlignment;
}

static_assert(sizeof(SegmentHead) == 72 + kColumnCount * sizeof(ColumnPlace));

}  // namespace vt
