#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "metadata/crawl/CrawlSink.h"
#include "metadata/indexing/RowContents.h"
#include "metadata/store/SegmentBuilder.h"

namespace vt {

/// Gathers what a crawl finds in a segment. A folder is called by its number there.
class CrawledSegment final : public CrawlSink {
 public:
  /// Borrows `types`, which must be those of the crawl, and `contents`, which is told of each entry
  /// unless it is nullptr.
  explicit CrawledSegment(const ContentTypes& types, RowContents* contents = nullptr);

  /// Adds a folder to begin at, and those above it as they are now. `path` is absolute and
  /// canonical, and lies in no other root; there need be nothing.
  CrawledFolderId addRoot(const std::string& path);

  bool addEntries(CrawledFolderId folder, std::span<CrawledEntry> entries) override;
  void finishFolder(CrawledFolderId folder, const FolderStamp& stamp, bool isComplete) override;

  const SegmentBuilder& built() const { return built_; }
  /// Has what was gathered be written but once; see SegmentBuilder.
  void releaseWhenWritten() { built_.releaseWhenWritten(); }

 private:
  std::uint32_t folderAt(const std::string& path);

  SegmentBuilder built_;
  RowContents* contents_;
  std::unordered_map<std::string, std::uint32_t> rootsAndAbove_;  // by path
};

}  // namespace vt
