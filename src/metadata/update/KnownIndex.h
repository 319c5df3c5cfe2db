#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
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
/// Folders are called by numbers that stay, whatever they are called in segments.
class KnownIndex {
 public:
  /// What is published of an index calls its rows and folders by numbers of its own.
  struct Layout {
    std::vector<std::uint32_t> rows;     ///< what each row of the delta is called here
    std::vector<std::uint32_t> folders;  ///< what each folder is called here
  };
  /// A generation that was published or read, while what is known goes on from it.
  struct Mark {
    Layout layout;
    std::size_t newerCount = 0;  ///< rows beside the base that there were
  };

  /// Nothing when the generation has a type that `types` lacks. The generation must be sound, see
  /// verifyGeneration(). Takes a pass over rows and folders, 4 bytes for each row.
  static std::optional<KnownIndex> of(IndexGeneration generation, const ContentTypes& types);

  KnownFolders folders;

  const Manifest& manifest() const { return generation_.manifest; }
  const IndexGeneration& generation() const { return generation_; }
  const Layout& layout() const { return layout_; }  ///< of generation()
  std::size_t baseRowCount() const { return base_.rowCount(); }
  /// Rows of the base that do not count, and rows beside it.
  std::size_t changedRowCount() const { return deadCount_ + liveCount_; }

  /// Calls `visit(row, name)` for each entry of the folder.
  void forEachIn(std::uint32_t folder,
                 FunctionRef<void(std::uint32_t row, std::string_view name)> visit) const;
  /// Calls `visit(row)` for each row that `isWanted(created)` says of when it was created,
  /// microseconds since 1970. Takes a pass over that column.
  void forEachCreated(FunctionRef<bool(std::int64_t created)> isWanted,
                      FunctionRef<void(std::uint32_t row)> visit) const;
  /// Whether the rows say the same of their inodes, as those of one file with several names do.
  bool haveSameStatus(std::uint32_t row, std::uint32_t other) const;
  /// kNoDate when nobody knows.
  std::int64_t createdOf(std::uint32_t row) const;
  std::uint32_t folderOf(std::uint32_t row) const {
    return isOfBase(row) ? baseFolderOf(row) : newer_[row - baseRowCount()].folder;
  }
  std::string_view nameOf(std::uint32_t row) const {
    return isOfBase(row) ? base_.name(row) : newer_[row - baseRowCount()].name;
  }
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

  /// Those that were removed since generation() was published or read.
  const std::vector<std::uint32_t>& removedRows() const { return removed_; }
  std::uint64_t addedCount() const { return addedCount_; }
  std::uint64_t removedCount() const { return removedCount_; }

  /// Adds all of it to `built`, which is to be a delta of the base and has nothing yet. Gives what
  /// the entries that were added and the folders are called here.
  Layout build(SegmentBuilder& built) const;

  /// Goes on from the published generation, which is made of what build() gave.
  void take(IndexGeneration published, Layout layout);
  void take(Manifest manifest) { generation_.manifest = std::move(manifest); }

  /// Marks generation(), of which a MergedSegment is to be made while what is known goes on.
  Mark mark() const { return {layout_, newer_.size()}; }
  /// Goes on from `merged`, of the generation that was marked: what has changed since is what
  /// build() adds to it, and rows are called anew. `order` is that of MergedSegment. Gives what
  /// each row was called before. Takes a pass over the rows. Nothing, and nothing is done, when
  /// `merged` is of another size or has a type that `types` lacks.
  std::optional<std::vector<std::uint32_t>> rebase(std::shared_ptr<const Segment> merged,
                                                   std::span<const std::uint32_t> order,
                                                   const Mark& mark, const ContentTypes& types);

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

  void takeFolders(const GenerationColumns& columns);
  void takeNewerRows(const SegmentColumns& delta);
  void addNewer(Row row);
  void numberBaseFolders(std::vector<std::uint32_t> baseFolders);
  void renumberClasses(const Segment& merged);
  void renumberNewer(const SegmentColumns& merged, std::size_t firstKept,
                     std::vector<std::uint32_t>& before);
  bool isOfBase(std::uint32_t row) const { return row < baseRowCount(); }
  std::uint32_t baseFolderOf(std::uint32_t row) const { return baseFolders_[base_.folderOf(row)]; }

  IndexGeneration generation_;
  Layout layout_;                           // of generation_
  std::vector<ContentTypeId> types_;        // by the segments' numbers
  std::shared_ptr<const Segment> segment_;  // the base, which need not be of generation_ yet
  SegmentColumns base_;                     // its columns
  RowsByFolder baseRows_;                   // by its own folders
  Bitmap dead_;
  std::size_t deadCount_ = 0;
  AccessClassTable classes_;
  std::vector<Row> newer_;
  std::unordered_map<std::uint32_t, std::vector<std::uint32_t>> newerIn_;  // live ones, by folder
  std::size_t liveCount_ = 0;                                              // of newer_
  std::vector<std::uint32_t> baseFolders_;  // here, by the base's own numbers
  std::vector<std::uint32_t> baseNumbers_;  // the other way; shorter than there are folders
  std::vector<std::uint32_t> removed_;
  std::uint64_t addedCount_ = 0;
  std::uint64_t removedCount_ = 0;
};

}  // namespace vt
