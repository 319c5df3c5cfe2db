#include "vistaro/IndexReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>

#include "foundation/UTF8.h"
#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/catalogue/CatalogueWriter.h"
#include "metadata/indexing/ContentsVerifier.h"
#include "metadata/store/GenerationColumns.h"
#include "metadata/store/GenerationVerifier.h"
#include "metadata/store/IndexFolder.h"
#include "vistaro/CommandError.h"
#include "vistaro/ContentState.h"
#include "vistaro/IndexState.h"
#include "vistaro/LocalTime.h"
#include "vistaro/Terminal.h"
#include "vistaro/WatchReport.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

std::uint64_t bytesOf(const IndexGeneration& generation) {
  return generation.segment->identity().bytes +
         (generation.delta ? generation.delta->identity().bytes : 0);
}

double bytesPerFile(const IndexGeneration& generation) {
  const std::size_t entries = columnsOf(generation).entryCount();
  return entries == 0 ? 0 : static_cast<double>(bytesOf(generation)) / static_cast<double>(entries);
}

/// Folders that are entries of others, as roots are not.
std::size_t folderCountOf(const GenerationColumns& columns) {
  const auto isDead = [&](std::uint32_t folder) {
    return columns.dead.contains(columns.base.folderRows[folder]);
  };
  const auto& ofBase = columns.base.foldersByRow;
  return ofBase.size() - static_cast<std::size_t>(std::ranges::count_if(ofBase, isDead)) +
         columns.delta.foldersByRow.size();
}

void printContents(const ContentState& state, Json& report) {
  if (!state.counts) {
    report["contentError"] = displayText(state.error->reason);
    return;
  }
  report["contents"] = state.counts->contents;
  report["texts"] = state.counts->withText;
  report["attributes"] = state.counts->attributes;
  report["filesNotLookedInto"] = state.pending;
  report["catalogueBytes"] = state.counts->bytes;
  report["failures"] = state.counts->failures;
  report["newestFailures"] = Json::array();
  for (const ContentRecord& record : state.failures) {
    report["newestFailures"].push_back({{"path", displayText(record.path)},
                                        {"extractor", record.extractor},
                                        {"reason", displayText(record.failure->reason)}});
  }
}

void printAsJson(const IndexState& state, const std::string& indexFolder) {
  Json report;
  report["folder"] = displayText(indexFolder);
  report["state"] = wordFor(state);
  report["indexing"] = state.lock.has_value();
  if (state.error) report["error"] = displayText(state.error->reason);
  if (state.generation) {
    const Manifest& manifest = state.generation->manifest;
    const GenerationColumns columns = columnsOf(*state.generation);
    report["generation"] = manifest.generation;
    report["roots"] = Json::array();
    for (const std::string& root : manifest.roots) report["roots"].push_back(displayText(root));
    report["files"] = columns.entryCount();
    report["folders"] = folderCountOf(columns);
    report["accessClasses"] = columns.base.classes.size();
    report["baseRows"] = columns.base.rowCount();
    report["deadRows"] = columns.deadCount;
    report["deltaRows"] = columns.delta.rowCount();
    report["bytes"] = bytesOf(*state.generation);
    report["began"] = instantText(manifest.began);
    report["ended"] = instantText(manifest.ended);
    report["vouched"] = instantText(manifest.vouched);
    printContents(contentStateOf(indexFolder, *state.generation), report);
    report["crawlSeconds"] = std::chrono::duration<double>(manifest.duration).count();
    report["ageSeconds"] = std::chrono::duration<double>(*state.age).count();
  }
  if (state.watcher) report["watch"] = watchAsJson(*state.watcher);
  fmt::print("{}\n", report.dump(2));
}

const auto show = showStatusLine;

void showContents(const ContentState& state) {
  if (!state.counts) {
    const bool isMissing = state.error->kind == StoreError::Kind::kMissing;
    show("Contents", isMissing ? "no file was looked into" : printable(state.error->reason));
    return;
  }
  show("Contents", fmt::format("{} files, {} with text, {} attributes; {} to be looked into",
                               state.counts->contents, state.counts->withText,
                               state.counts->attributes, state.pending));
  show("Catalogue", fmt::format("{} bytes", state.counts->bytes));
  if (state.counts->failures == 0) return;
  show("Failures", fmt::format("{} files", state.counts->failures));
  for (const ContentRecord& record : state.failures) {
    fmt::print("  {}: {}\n", printable(record.path), printable(record.failure->reason));
  }
}

void printAsText(const IndexState& state, const std::string& indexFolder) {
  show("Index", printable(indexFolder));
  if (state.error) {
    show("State", fmt::format("{}: {}", wordFor(state), printable(state.error->reason)));
  } else {
    const Manifest& manifest = state.generation->manifest;
    const GenerationColumns columns = columnsOf(*state.generation);
    show("State", wordFor(state));
    show("Generation", fmt::format("{}", manifest.generation));
    for (const std::string& root : manifest.roots) show("Holds", printable(root));
    show("Files", fmt::format("{} in {} folders, {} access classes", columns.entryCount(),
                              folderCountOf(columns), columns.base.classes.size()));
    if (state.generation->delta) {
      show("Rows",
           fmt::format("{} in the base, {} of them dead, and {} in the delta",
                       columns.base.rowCount(), columns.deadCount, columns.delta.rowCount()));
    }
    show("Size", fmt::format("{} bytes, {:.1f} for each file", bytesOf(*state.generation),
                             bytesPerFile(*state.generation)));
    showContents(contentStateOf(indexFolder, *state.generation));
    show("Crawl", fmt::format("began {}, took {:.2f} s", localTimeText(manifest.began),
                              std::chrono::duration<double>(manifest.duration).count()));
    if (manifest.vouched > manifest.began) {
      show("Watched",
           fmt::format("nothing is missing from before {}", localTimeText(manifest.vouched)));
    }
  }
  if (state.watcher) showWatch(*state.watcher, *state.age);
  show("Indexer", state.lock ? printable(state.lock->reason) : "not running");
}

/// Prints how the catalogue and the segment agree. Throws CommandError when they do not.
void verifyCatalogue(const IndexFolder& folder, const IndexGeneration& generation) {
  const auto catalogue = CatalogueReader::open(folder.path());
  if (!catalogue && catalogue.error().kind == StoreError::Kind::kMissing) return;
  if (!catalogue) throw CommandError{kFailure, printable(catalogue.error().reason)};
  const Result<ContentsVerdict, StoreError> verdict = verifyContents(generation, **catalogue);
  if (!verdict) throw CommandError{kFailure, printable(verdict.error().reason)};
  (*catalogue)->lookAway();
  // The text index can only be looked through by who may write.
  const Result<IndexLock, StoreError> lock = folder.lock();
  if (lock) {
    const auto writer = CatalogueWriter::open(folder.path());
    StoreFailure failure = writer ? (*writer)->checkText() : StoreFailure(writer.error());
    if (failure) throw CommandError{kFailure, printable(failure->reason)};
  }
  fmt::print(
      "the catalogue is sound: {} files looked into, {} to be looked into, {} gone since{}\n",
      verdict->lookedInto, verdict->pending, verdict->withoutRow,
      lock ? "" : "; its text index was not looked through, since " + lock.error().reason);
}

}  // namespace

int reportIndex(const std::string& indexFolder, bool asJson) {
  const IndexState state = indexStateAt(indexFolder);
  if (asJson) {
    printAsJson(state, indexFolder);
  } else {
    printAsText(state, indexFolder);
  }
  if (state.error && !state.isMissing()) return kFailure;
  return state.isFresh() ? kFound : kNothingFound;
}

int verifyIndex(const std::string& indexFolder) {
  const Result<IndexFolder, StoreError> folder = IndexFolder::open(indexFolder);
  if (!folder) throw CommandError{kFailure, printable(folder.error().reason)};
  const Result<IndexGeneration, StoreError> generation = folder->current();
  if (!generation) throw CommandError{kFailure, printable(generation.error().reason)};
  if (const std::optional<StoreError> damage = verifyGeneration(*generation)) {
    throw CommandError{kFailure, printable(damage->reason)};
  }
  fmt::print("generation {} is sound: {} files, {} bytes\n", generation->manifest.generation,
             columnsOf(*generation).entryCount(), bytesOf(*generation));
  verifyCatalogue(*folder, *generation);
  return kFound;
}

}  // namespace vt::tool
