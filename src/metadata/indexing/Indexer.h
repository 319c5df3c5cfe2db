#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/crawl/TreeCrawl.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// How far a run of the indexer has come.
struct IndexingProgress {
  CrawlCounts crawled;
  std::optional<std::uint64_t> expectedEntries;  ///< as many as the last generation has
  std::chrono::duration<double> elapsed{};       ///< since the crawl began
  bool isPublishing = false;  ///< said once, when the crawl is done; can't be ended any more
};

/// What a run of the indexer came to.
struct IndexingReport {
  Manifest manifest;  ///< of the generation that was published
  CrawlCounts crawled;
  std::chrono::duration<double> publishing{};
  /// Why all was crawled anew though there was a generation to remember; nothing when there was
  /// none, or it was used.
  std::optional<StoreError> distrusted;
};

/// Crawls folders and publishes what it found as the next generation of an index.
///
/// The last generation is remembered, so that only what has changed since is read, unless it turns
/// out to be damaged: then all is read again, and whoever has that generation open goes on with it.
class Indexer {
 public:
  /// Is told at the beginning and then some times a second how far it has come; ends the run by
  /// answering false.
  using Progress = FunctionRef<bool(const IndexingProgress&)>;

  /// Borrows all for its life.
  Indexer(const IndexFolder& folder, const IndexLock& lock, const ContentTypes& types)
      : folder_(folder), lock_(lock), types_(types) {}

  /// Crawls `roots`, absolute and canonical paths that may lie in each other. Nothing when it was
  /// ended; an error leaves the last generation in force.
  Result<std::optional<IndexingReport>, StoreError> run(std::vector<std::string> roots,
                                                        Progress progress) const;

 private:
  const IndexFolder& folder_;
  const IndexLock& lock_;
  const ContentTypes& types_;
};

}  // namespace vt
