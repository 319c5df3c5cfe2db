#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/crawl/TreeCrawl.h"
#include "metadata/extract/Extractors.h"
#include "metadata/indexing/ContentIndexer.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// How far a run of the indexer has come.
struct IndexingProgress {
  CrawlCounts crawled;
  std::optional<std::uint64_t> expectedEntries;  ///< as many as the last generation has
  std::chrono::duration<double> elapsed{};       ///< since the crawl began
  bool isPublishing = false;  ///< said once, when the crawl is done; can't be ended any more
  /// Files that are looked into, once the crawl is published: names are found by now.
  std::optional<ContentCounts> contents;
};

/// What a run of the indexer came to.
struct IndexingReport {
  Manifest manifest;  ///< of the generation that was published
  CrawlCounts crawled;
  std::chrono::duration<double> publishing{};
  /// Why all was crawled anew though there was a generation to remember; nothing when there was
  /// none, or it was used.
  std::optional<StoreError> distrusted;
  /// What became of the files that were to be looked into; nothing when nobody looks into files.
  std::optional<ContentCounts> contents;
  std::chrono::duration<double> lookingIntoFiles{};
  /// Why the catalogue was made anew; nothing when it was not, or there was none.
  std::optional<StoreError> distrustedCatalogue;
  /// Why files were not looked into, or not all: searches by words then walk files, or miss some.
  std::optional<StoreError> contentError;
};

/// Crawls folders and publishes what it found as the next generation of an index.
///
/// The last generation is remembered, so that only what has changed since is read, unless it turns
/// out to be damaged: then all is read again, and whoever has that generation open goes on with it.
class Indexer {
 public:
  /// Is told at the beginning and then some times a second how far it has come; ends the run by
  /// answering false. What was published by then stays.
  using Progress = FunctionRef<bool(const IndexingProgress&)>;

  /// Borrows all for its life. Without `extractors` it looks into no file, and leaves a catalogue
  /// alone.
  Indexer(const IndexFolder& folder, const IndexLock& lock, const ContentTypes& types,
          const Extractors* extractors = nullptr)
      : folder_(folder), lock_(lock), types_(types), extractors_(extractors) {}

  /// Crawls `roots`, absolute and canonical paths that may lie in each other, publishes, and then
  /// looks into the files that have changed. Nothing when it was ended before it published; an
  /// error leaves the last generation in force.
  Result<std::optional<IndexingReport>, StoreError> run(std::vector<std::string> roots,
                                                        Progress progress) const;

 private:
  const IndexFolder& folder_;
  const IndexLock& lock_;
  const ContentTypes& types_;
  const Extractors* extractors_;
};

}  // namespace vt
