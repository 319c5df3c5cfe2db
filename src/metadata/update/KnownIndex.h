#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/crawl/CrawlSink.h"
#include "metadata/store/AccessClassTable.h"
#include "metadata/store/GenerationColumns.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/RowsByFolder.h"
#include "metadata/store/SegmentBuilder.h"
#include "metadata/update/KnownFolders.h"

namespace vt {

/// A generation of an index, while changes are made to it: what is to be published next.
///
/// Rows of its base are called by their numbers; those that were added since go on from there.
class KnownIndex {
 public:
  /// Nothing when the generation has a type that `types` lacks. The generation must be sound, see
  /// verifyGeneration(). Takes a pass over rows and folders, 4 bytes for each row.
  static std::optional<KnownIndex> of(IndexGeneration generation, const ContentTypes& types);

  KnownFolders folders;

  const Manifest& manifest() const { return generation_.manifest; }
  const IndexGeneration& generation() const { return generation_; }
  std::size_t baseRowCount() const { return columns_.base.rowCount(); }
  /// Rows of the base that do not count, and rows beside it.
  std::size_t changedRowCount() const { return deadCount_ + liveCount_; }

  /// Calls `visit(row, name)` for each entry of the folder.
  void forEachIn(std::uint32_t folder,
                 FunctionRef<void(std::uint32_t row, std::string_view name)> visit) const;
  /// The folder that the row is; kNoFolder if it is none.
  std::uint32_t ownFolderOf(std::uint32_t row) const;
  /// Whether the row says of the entry what the entry says of itself.
  bool isAsKnown(std::uint32_t row, const CrawledEntry& entry);

  /// Whether the row counts.
  bool isLive(std::uint32_t row) const {
    return isOfBase(row) ? !dead_.contains(row) : newer_[row - baseRowCount()].isLive;
  }
  void remove(std::uint32_t row);
  /// Adds an entry of `folder`; `ownFolder` is the folder that it is, or kNoFolder. Gives its row.
  std::uint32_t add(std::uint32_t folder, const CrawledEntry& entry, std::uint32_t ownFolder);
  std::uint32_t classOf(const CrawledEntry& entry) {
    return classes_.numberOf(entry.status.ownership, entry.acl, entry.aclBytes);
  }

  std::uint64_t addedCount() const { return addedCount_; }
  std::uint64_t removedCount() const { return removedCount_; }

  /// Adds all of it to `built`, which is to be a delta of the base and has nothing yet. Gives of
  /// each entry that was added the row it is here.
  std::vector<std::uint32_t> build(SegmentBuilder& built) const;

  /// Goes on from the published generation, which is made of what build() gave.
  void take(IndexGeneration published) { generation_ = std::move(published); }
  void take(Manifest manifest) { generation_.manifest = std::move(manifest); }

  /// Of a row beside the base.
  const FileStatus& statusOf(std::uint32_t row) const {
    return newer_[row - baseRowCount()].status;
  }
  ContentTypeId typeOf(std::uint32_t row) const { return newer_[row - baseRowCount()].type; }

 private:
  struct Row {
    std::string name;
    FileStatus status;
    ContentTypeId type = 0;
    std::uint32_t accessClass = 0;
    std::uint32_t folder = kNoFolder;
    std::uint32_t ownFolder = kNoFolder;
    bool isLive = true;
  };

  KnownIndex(IndexGeneration generation, std::vector<ContentTypeId> types);

  void takeFolders();
  void takeNewerRows();
  void addNewer(Row row);
  const Segment& tables() const {
    return generation_.delta ? *generation_.delta : *generation_.segment;
  }
  bool isOfBase(std::uint32_t row) const { return row < baseRowCount(); }

  IndexGeneration generation_;
  std::vector<ContentTypeId> types_;  // by the segments' numbers
  GenerationColumns columns_;         // as they were when this was made
  IndexGeneration borrowed_;          // what the columns are borrowed from
  RowsByFolder baseRows_;
  Bitmap dead_;
  std::size_t deadCount_ = 0;
  AccessClassTable classes_;
  std::vector<Row> newer_;
  std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> newerIn_;  // live ones, by folder
  std::size_t liveCount_ = 0;                                              // of newer_
  std::vector<std::uint32_t> baseFolders_;  // here, by the base's own numbers
  std::uint64_t addedCount_ = 0;
  std::uint64_t removedCount_ = 0;
};

}  // namespace vt
