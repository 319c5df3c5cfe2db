#include "metadata/indexing/Indexer.h"

#include <utility>

#include "metadata/crawl/IndexRoots.h"
#include "metadata/indexing/ContentRun.h"
#include "metadata/indexing/CrawledSegment.h"
#include "metadata/indexing/SegmentMemory.h"
#include "metadata/store/GenerationVerifier.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

/// The last generation, if it is there and sound; else `why`, unless it was never there.
std::optional<SegmentMemory> remember(const IndexFolder& folder, std::optional<StoreError>& why) {
  Result<IndexGeneration, StoreError> earlier = folder.current();
  if (!earlier) {
    if (earlier.error().kind != StoreError::Kind::kMissing) why = earlier.error();
    return std::nullopt;
  }
  why = verifyGeneration(*earlier);
  earlier->segment->dropPages();
  if (why) return std::nullopt;
  return std::optional<SegmentMemory>(std::in_place, std::move(earlier).value());
}

/// Looks into the files of the generation that the report is of, and tells it the rest.
void lookIntoFiles(const IndexFolder& folder, const ContentTypes& types, ContentRun& contents,
                   IndexingReport& report, ContentIndexer::Progress progress) {
  const Clock::time_point start = Clock::now();
  const Result<IndexGeneration, StoreError> generation = folder.current();
  if (generation) {
    report.contents =
        contents.lookIntoFiles(*generation->segment, types, report.crawled.leftOut == 0, progress);
  } else {
    report.contentError = generation.error();
  }
  report.lookingIntoFiles = Clock::now() - start;
  report.distrustedCatalogue = contents.distrusted();
  if (contents.error()) report.contentError = contents.error();
}

}  // namespace

Result<std::optional<IndexingReport>, StoreError> Indexer::run(std::vector<std::string> roots,
                                                               Progress progress) const {
  IndexingReport report;
  std::optional<SegmentMemory> memory = remember(folder_, report.distrusted);
  const std::vector<SegmentIdentity> earlier =
      memory ? memory->segments() : std::vector<SegmentIdentity>();
  std::optional<ContentRun> contents;
  if (extractors_ != nullptr) contents.emplace(folder_, *extractors_, earlier);
  Manifest& manifest = report.manifest;
  manifest.roots = outermostRoots(std::move(roots));
  manifest.began = std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
  manifest.vouched = manifest.began;
  const Clock::time_point start = Clock::now();

  IndexingProgress shown;
  if (memory) shown.expectedEntries = memory->entryCount();
  const auto tell = [&](const CrawlCounts& counts) {
    shown.crawled = counts;
    shown.elapsed = Clock::now() - start;
    if (memory) memory->dropPages();
    return progress(shown);
  };
  if (!tell({})) return std::optional<IndexingReport>();
  std::optional<CrawledSegment> segment(std::in_place, types_,
                                        contents ? contents->rows() : nullptr);
  std::vector<CrawlRoot> begins;
  begins.reserve(manifest.roots.size());
  for (const std::string& root : manifest.roots) begins.push_back({root, segment->addRoot(root)});
  TreeCrawl crawl(types_, memory ? &*memory : nullptr, *segment);
  // A segment that is full says so itself when it is to be written.
  if (crawl.run(begins, tell) == TreeCrawl::End::kStopped) {
    return std::optional<IndexingReport>();
  }

  const Clock::time_point crawled = Clock::now();
  manifest.ended = std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
  manifest.duration = std::chrono::duration_cast<std::chrono::microseconds>(crawled - start);
  memory.reset();  // which is as large as what publishing needs
  segment->releaseWhenWritten();
  shown.isPublishing = true;
  tell(crawl.counts());
  Result<Manifest, StoreError> published =
      folder_.publish(lock_, segment->built(), std::move(manifest),
                      [&](const SegmentIdentity& identity, std::span<const std::uint32_t> rows) {
                        if (contents) contents->announce(identity, rows, earlier);
                      });
  if (!published) return published.error();
  manifest = std::move(published).value();
  report.crawled = crawl.counts();
  report.publishing = Clock::now() - crawled;
  segment.reset();
  if (contents) {
    shown.contents.emplace();
    lookIntoFiles(folder_, types_, *contents, report, [&](const ContentCounts& counts) {
      shown.contents = counts;
      shown.elapsed = Clock::now() - start;
      return progress(shown);
    });
  }
  return std::optional<IndexingReport>(std::move(report));
}

}  // namespace vt
