#include "metadata/indexing/ContentsVerifier.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

namespace vt {

Result<ContentsVerdict, StoreError> verifyContents(const Segment& segment,
                                                   CatalogueReader& catalogue) {
  if (StoreFailure failure = catalogue.lookAnew()) return *std::move(failure);
  if (StoreFailure failure = catalogue.check()) return *std::move(failure);
  const auto rows = catalogue.rowsOf(segment.identity(), segment.columns().rowCount());
  if (!rows) return rows.error();
  if (!*rows) {
    return StoreError{StoreError::Kind::kMissing,
                      fmt::format("{} says nothing of {}", catalogue.path(), segment.shownPath())};
  }
  const Result<ContentNumber, StoreError> end = catalogue.end();
  if (!end) return end.error();
  const Result<Bitmap, StoreError> known = catalogue.all(*end);
  if (!known) return known.error();
  ContentsVerdict verdict;
  Bitmap seen(*end);
  for (const ContentNumber content : **rows) {
    if (content == kWithoutContent) continue;
    if (content == kPendingContent) {
      ++verdict.pending;
      continue;
    }
    if (content >= *end || !known->contains(content)) {
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
