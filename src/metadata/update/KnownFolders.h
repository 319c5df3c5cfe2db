#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/Date.h"
#include "foundation/FunctionRef.h"
#include "metadata/store/FolderStamp.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// A folder as an index knows it.
struct KnownFolder {
  std::uint32_t parent = kNoFolder;
  std::string name;
  std::uint32_t accessClass = 0;
  std::uint32_t entryCount = 0;
  FolderStamp stamp;
  std::int64_t created = kNoDate;  ///< as its row has it
  std::uint32_t row = kNoRow;      ///< that it is; kNoRow for roots and those above
  Date seen;                       ///< when it was listed, or before
  bool isRoot = false;
  bool isListed = false;
  bool isGone = false;
};

/// The tree of folders of an index, while changes are made to it. Folders keep their numbers, which
/// count from 0, that of "/".
///
/// A folder whose place was taken from it is detached, and all below with it, until it is put
/// somewhere else or removed.
class KnownFolders {
 public:
  /// Adds a folder below `parent`, which is there already.
  std::uint32_t add(KnownFolder folder);

  KnownFolder& operator[](std::uint32_t folder) { return folders_[folder]; }
  const KnownFolder& operator[](std::uint32_t folder) const { return folders_[folder]; }
  std::uint32_t size() const { return static_cast<std::uint32_t>(folders_.size()); }
  const std::vector<std::uint32_t>& children(std::uint32_t folder) const {
    return children_[folder];
  }

  /// The folder `name` of `parent`; kNoFolder when there is none.
  std::uint32_t find(std::uint32_t parent, std::string_view name) const;
  /// The folder at an absolute path; kNoFolder when there is none.
  std::uint32_t at(std::string_view path) const;
  /// Folders that were seen with this device and inode number, and are not gone.
  std::vector<std::uint32_t> sameAs(std::uint64_t device, std::uint64_t inode) const;

  /// The path; nothing of a folder that is detached, or in one that is.
  std::optional<std::string> pathOf(std::uint32_t folder) const;
  /// How many folders are above.
  std::uint32_t depthOf(std::uint32_t folder) const;
  bool isIn(std::uint32_t folder, std::uint32_t ancestor) const;
  /// Whether the folder was asked to be indexed, or is below one that was.
  bool isCovered(std::uint32_t folder) const;

  void detach(std::uint32_t folder);
  void attach(std::uint32_t folder, std::uint32_t parent, std::string_view name);
  void setStamp(std::uint32_t folder, const FolderStamp& stamp);

  /// Removes a detached folder and all below it, each of which is told to `visit` first.
  void remove(std::uint32_t folder, FunctionRef<void(std::uint32_t folder)> visit);

 private:
  static std::size_t keyOf(std::uint32_t parent, std::string_view name);
  static std::size_t keyOf(const FolderStamp& stamp);
  static void erase(std::unordered_multimap<std::size_t, std::uint32_t>& from, std::size_t key,
                    std::uint32_t folder);

  std::vector<KnownFolder> folders_;
  std::vector<std::vector<std::uint32_t>> children_;
  // By keyOf(), which several may share.
  std::unordered_multimap<std::size_t, std::uint32_t> byName_;
  std::unordered_multimap<std::size_t, std::uint32_t> byIdentity_;
};

}  // namespace vt
