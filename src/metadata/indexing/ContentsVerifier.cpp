#include "metadata/indexing/ContentsVerifier.h"

#include <fmt/format.h>

#include <memory>
#include <utility>
#include <vector>

#include "metadata/store/GenerationColumns.h"

namespace vt {
namespace {

/// What the rows have that count.
Result<std::vector<ContentNumber>, StoreError> contentsOf(const IndexGeneration& generation,
                                                          CatalogueReader& catalogue) {
  std::vector<ContentNumber> contents;
  for (const std::shared_ptr<const Segment>& segment : {generation.segment, generation.delta}) {
    if (!segment) continue;
    const auto rows = catalogue.rowsOf(segment->identity(), segment->columns().rowCount());
    if (!rows) return rows.error();
    if (!*rows) {
      return StoreError{
          StoreError::Kind::kMissing,
          fmt::format("{} says nothing of {}", catalogue.path(), segment->shownPath())};
    }
    contents.insert(contents.end(), (*rows)->begin(), (*rows)->end());
  }
  columnsOf(generation).dead.forEach([&](std::size_t row) { contents[row] = kWithoutContent; });
  return contents;
}

}  // namespace

Result<ContentsVerdict, StoreError> verifyContents(const IndexGeneration& generation,
                                                   CatalogueReader& catalogue) {
  if (StoreFailure failure = catalogue.lookAnew()) return *std::move(failure);
  if (StoreFailure failure = catalogue.check()) return *std::move(failure);
  const Result<std::vector<ContentNumber>, StoreError> rows = contentsOf(generation, catalogue);
  if (!rows) return rows.error();
  const Result<ContentNumber, StoreError> end = catalogue.end();
  if (!end) return end.error();
  const Result<Bitmap, StoreError> known = catalogue.all(*end);
  if (!known) return known.error();
  ContentsVerdict verdict;
  Bitmap seen(*end);
  for (const ContentNumber content : *rows) {
    if (content == kWithoutContent) continue;
    if (content == kPendingContent) {
      ++verdict.pending;
      continue;
    }
    if (content >= *end || !known->contains(content)) {
      // A file with several names was looked into anew by one that an update was told of.
      if (generation.delta) {
        ++verdict.pending;
        continue;
      }
      return damageError(catalogue.path(), "a file has a content that is not there");
    }
    seen.add(content);
    ++verdict.lookedInto;
  }
  Bitmap unseen = *known;
  unseen -= seen;
  verdict.withoutRow = unseen.count();
  return verdict;
}

}  // namespace vt
