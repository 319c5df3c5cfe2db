#include "vistaro/IndexSink.h"

#include <optional>

namespace vt::tool {
namespace {

/// Whether there is nothing that changes could be made to.
bool wantsCrawl(const StoreError& error) {
  using enum StoreError::Kind;
  return error.kind == kMissing || error.kind == kDamaged || error.kind == kOtherKind;
}

}  // namespace

Result<bool, StoreError> IndexSink::crawl(Meanwhile goesOn) {
  // What is known and merged is of no use then, and its memory is needed.
  updater_.forget();
  // Extended attributes are looked at before the first file is looked into, which is left to
  // lookIntoFiles().
  const auto report = writer_.run(roots_, [&](const IndexingProgress& progress) {
    return goesOn() && (!progress.contents || progress.contents->expected == 0);
  });
  if (!report) return report.error();
  if (!*report) return false;
  IndexWriter::tell(**report);
  IndexWriter::tellOfTrouble(**report);
  contents_ = {};
  contents_.areToBeTold = writer_.looksIntoFiles();
  contents_.errorOfCrawl = (*report)->contentError;
  return true;
}

Result<ChangeSink::Applied, StoreError> IndexSink::apply(const FileChanges& changes,
                                                         Meanwhile goesOn) {
  const Result<UpdateReport, StoreError> report = updater_.apply(changes);
  if (report) return report->missesOtherNames ? Applied::kNotAllNames : Applied::kAll;
  if (!wantsCrawl(report.error())) return report.error();
  const Result<bool, StoreError> isDone = crawl(goesOn);
  if (!isDone) return isDone.error();
  return *isDone ? Applied::kAll : Applied::kEnded;
}

Result<bool, StoreError> IndexSink::lookIntoFiles(Meanwhile goesOn) {
  const auto start = std::chrono::steady_clock::now();
  const auto counts = writer_.lookIntoFiles(
      updater_, [&](const IndexingProgress& /*progress*/) { return goesOn(); });
  if (!counts) {
    if (!wantsCrawl(counts.error())) return counts.error();
    // It finds out again what the catalogue does not say.
    const Result<bool, StoreError> isDone = crawl(goesOn);
    if (!isDone) return isDone.error();
    if (contents_.errorOfCrawl) return *contents_.errorOfCrawl;
    return false;
  }
  contents_.time += std::chrono::steady_clock::now() - start;
  contents_.counts.done += counts->done;
  contents_.counts.failures += counts->failures;
  if (counts->done < counts->expected) return false;
  if (std::exchange(contents_.areToBeTold, false)) {
    contents_.counts.expected = contents_.counts.done;
    IndexWriter::tellOfContents(contents_.counts, contents_.time);
  }
  return true;
}

}  // namespace vt::tool
