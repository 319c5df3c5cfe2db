#include "vistaro/IndexReport.h"

#include <fmt/format.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "foundation/UTF8.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/SegmentVerifier.h"
#include "vistaro/CommandError.h"
#include "vistaro/IndexState.h"
#include "vistaro/LocalTime.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

double bytesPerFile(const IndexGeneration& generation) {
  const std::size_t rows = generation.segment->columns().rowCount();
  const auto bytes = static_cast<double>(generation.segment->identity().bytes);
  return rows == 0 ? 0 : bytes / static_cast<double>(rows);
}

void printAsJson(const IndexState& state, const std::string& indexFolder) {
  Json report;
  report["folder"] = displayText(indexFolder);
  report["state"] = wordFor(state);
  report["indexing"] = state.lock.has_value();
  if (state.error) report["error"] = displayText(state.error->reason);
  if (state.generation) {
    const Manifest& manifest = state.generation->manifest;
    const SegmentColumns& segment = state.generation->segment->columns();
    report["generation"] = manifest.generation;
    report["roots"] = Json::array();
    for (const std::string& root : manifest.roots) report["roots"].push_back(displayText(root));
    report["files"] = segment.rowCount();
    report["folders"] = segment.foldersByRow.size();
    report["accessClasses"] = segment.classes.size();
    report["bytes"] = state.generation->segment->identity().bytes;
    report["began"] = instantText(manifest.began);
    report["ended"] = instantText(manifest.ended);
    report["crawlSeconds"] = std::chrono::duration<double>(manifest.duration).count();
  }
  fmt::print("{}\n", report.dump(2));
}

void printAsText(const IndexState& state, const std::string& indexFolder) {
  const auto show = [](std::string_view label, const std::string& text) {
    fmt::print("{:<12}{}\n", label, text);
  };
  show("Index", printable(indexFolder));
  if (state.error) {
    show("State", fmt::format("{}: {}", wordFor(state), printable(state.error->reason)));
  } else {
    const Manifest& manifest = state.generation->manifest;
    const SegmentColumns& segment = state.generation->segment->columns();
    show("State", wordFor(state));
    show("Generation", fmt::format("{}", manifest.generation));
    for (const std::string& root : manifest.roots) show("Holds", printable(root));
    show("Files", fmt::format("{} in {} folders, {} access classes", segment.rowCount(),
                              segment.folderCount(), segment.classes.size()));
    show("Size",
         fmt::format("{} bytes, {:.1f} for each file", state.generation->segment->identity().bytes,
                     bytesPerFile(*state.generation)));
    show("Crawl", fmt::format("began {}, took {:.2f} s", localTimeText(manifest.began),
                              std::chrono::duration<double>(manifest.duration).count()));
  }
  show("Indexer", state.lock ? printable(state.lock->reason) : "not running");
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
  const Segment& segment = *generation->segment;
  if (const std::optional<StoreError> damage = verifySegment(segment)) {
    throw CommandError{kFailure, printable(damage->reason)};
  }
  fmt::print("generation {} is sound: {} files, {} bytes\n", segment.generation(),
             segment.columns().rowCount(), segment.identity().bytes);
  return kFound;
}

}  // namespace vt::tool
