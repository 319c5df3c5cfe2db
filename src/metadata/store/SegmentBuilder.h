#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Result.h"
#include "metadata/live/FileStatus.h"
#include "metadata/rights/AclReader.h"
#include "metadata/store/AccessClassTable.h"
#include "metadata/store/FolderStamp.h"
#include "metadata/store/NameArena.h"
#include "metadata/store/RowTable.h"
#include "metadata/store/SegmentColumns.h"
#include "metadata/store/SegmentIdentity.h"
#include "metadata/store/StoreError.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

class FileWriter;

/// An entry of a folder, as a segment is to hold it. Borrows its name for the call.
struct SegmentEntry {
  std::string_view name;  ///< bytes: not empty, without slash and NUL
  FileStatus status;      ///< its ownership is the class's; device and inode are not kept
  ContentTypeId type = 0;
  std::uint32_t accessClass = 0;        ///< that addClass() gave
  std::uint32_t folder = kNoFolder;     ///< that it is in
  std::uint32_t ownFolder = kNoFolder;  ///< of a folder that was added with addFolder()
};

/// Gathers folders and their entries, in any order that has parents first, and writes them as a
/// segment. About 90 bytes of memory for an entry.
class SegmentBuilder {
 public:
  /// What a segment can hold: offsets in it have 32 bits.
  struct Limits {
    std::uint64_t rows = 0xFFFFFFFE;
    std::uint64_t folders = 0xFFFFFFFE;
    std::uint64_t textBytes = 0xFFFFFFFF;  ///< of all names together, folded or not
  };

  /// Borrows `types`, which must have given the types of all entries.
  explicit SegmentBuilder(const ContentTypes& types) : SegmentBuilder(types, Limits{}) {}
  SegmentBuilder(const ContentTypes& types, Limits limits);

  /// The number of the class of files with this owner, group, mode (type of file included) and
  /// access control list; the same one for the same. `aclBytes` count only if one is present.
  std::uint32_t addClass(const FileOwnership& ownership, AclPresence acl,
                         std::span<const std::uint8_t> aclBytes);

  /// Has the processor fetch what addClass() will look at, since there may be many classes.
  void prefetchClass(const FileOwnership& ownership) const { classes_.prefetch(ownership); }

  /// Adds a folder and gives its number: first "/", with kNoFolder for a parent and "" for a name,
  /// then each one after its parent, the ancestors of roots among them.
  std::uint32_t addFolder(std::uint32_t parent, std::string_view name, std::uint32_t accessClass);

  /// Says that all below the folder was asked to be indexed.
  void markRoot(std::uint32_t folder) { folders_[folder].isRoot = true; }

  /// Says what the folder is known again by, and whether all of its entries were added. One of
  /// which this is never said counts as not listed.
  void finishFolder(std::uint32_t folder, const FolderStamp& stamp, bool isListed);

  /// Adds an entry. False when the segment is full, or the name is one that no file can have: the
  /// entry is then left out.
  [[nodiscard]] bool addRow(const SegmentEntry& entry);

  /// Has write() give back the memory of what it has written, so that it can be called but once:
  /// what the file takes is then not taken twice.
  void releaseWhenWritten() { isReleased_ = true; }

  /// Gives a type the next number of its own, unless it has one.
  void addType(ContentTypeId type) { numberOfType(type); }

  /// Makes it a delta of `base`: all folders are to be added, and the entries that are not in the
  /// base. Of each folder of the base `baseFolders` has the number it was added under, or
  /// kNoFolder; `deadRows` has a bit for each row of the base. Classes and types of the base are to
  /// be added first, in their order.
  void goOnFrom(const SegmentIdentity& base, std::vector<std::uint32_t> baseFolders,
                std::span<const std::uint64_t> deadRows);
  /// Says how many entries the folder has with those that are in the base.
  void setEntryCount(std::uint32_t folder, std::uint32_t count) {
    folders_[folder].entryCount = count;
  }

  /// Whether more was added than a segment can hold. It can't be written any more.
  bool isFull() const { return isFull_; }

  std::size_t rowCount() const { return rows_->count; }
  std::size_t folderCount() const { return folders_.size(); }
  std::size_t classCount() const { return classes_.size(); }

  /// Writes the segment: rows sorted by modification, newest first, equal ones by the bytes of
  /// their paths. The file is then still to be synced. kTooLarge says that the segment is full.
  /// Takes a fifth of a second for a million rows, and a thread for a while where there are many.
  /// `order`, unless it is nullptr, is told which entry each row is, counted from 0 as they were
  /// added.
  Result<SegmentIdentity, StoreError> write(FileWriter& file, std::uint64_t generation,
                                            std::vector<std::uint32_t>* order = nullptr) const;

 private:
  struct Folder {
    std::uint32_t parent = kNoFolder;
    NameArena::Place name;
    std::uint32_t accessClass = 0;
    std::uint32_t entryCount = 0;
    FolderStamp stamp;
    bool isRoot = false;
    bool isListed = false;
  };

  std::uint16_t numberOfType(ContentTypeId type);

  const ContentTypes& types_;
  Limits limits_;
  NameArena names_;
  AccessClassTable classes_;
  std::vector<Folder> folders_;
  std::unique_ptr<RowTable> rows_ = std::make_unique<RowTable>();
  std::vector<ContentTypeId> usedTypes_;
  std::vector<std::uint16_t> numberOfType_;  // by type; kNoNumber for one that is not used
  // Of a delta; else empty.
  SegmentIdentity base_;
  std::vector<std::uint32_t> baseFolders_;
  std::vector<std::uint64_t> deadRows_;
  bool isFull_ = false;
  bool isReleased_ = false;

  friend class SegmentContents;
};

}  // namespace vt
