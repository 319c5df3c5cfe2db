#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "metadata/store/IndexFolder.h"
#include "metadata/store/IndexFreshness.h"

namespace vt::tool {

/// What there is to tell of an index.
struct IndexState {
  std::optional<IndexGeneration> generation;
  std::optional<IndexFreshness> freshness;  ///< of the generation, now
  std::optional<StoreError> error;          ///< why there is no generation
  std::optional<StoreError> lock;           ///< whose it is, while an indexer has it
  std::optional<WatcherRecord> watcher;     ///< what that tells, when it watches the files
  /// How long ago the index was known to be up to date.
  std::optional<std::chrono::microseconds> age;

  bool isFresh() const { return freshness == IndexFreshness::kFresh; }
  /// No index was ever made there.
  bool isMissing() const { return error && error->kind == StoreError::Kind::kMissing; }
};

/// Looks at the index at `folder`, as this process may.
IndexState indexStateAt(const std::string& folder);

/// "fresh", "old", "of the future", "missing" or "unreadable".
const char* wordFor(const IndexState& state);

}  // namespace vt::tool
