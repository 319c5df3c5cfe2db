#include "vistaro/IndexState.h"

#include <chrono>
#include <utility>

namespace vt::tool {

IndexState indexStateAt(const std::string& folder) {
  IndexState state;
  const Result<IndexFolder, StoreError> opened = IndexFolder::open(folder);
  if (!opened) {
    state.error = opened.error();
    return state;
  }
  Result<IndexGeneration, StoreError> generation = opened->current();
  if (generation) {
    const auto now = std::chrono::floor<Date::duration>(std::chrono::system_clock::now());
    state.generation = std::move(generation).value();
    state.freshness = freshnessOf(state.generation->manifest, now);
  } else {
    state.error = generation.error();
  }
  const Result<IndexLock, StoreError> lock = opened->lock();
  if (!lock && lock.error().kind == StoreError::Kind::kLocked) state.lock = lock.error();
  return state;
}

const char* wordFor(const IndexState& state) {
  if (!state.freshness) return state.isMissing() ? "missing" : "unreadable";
  switch (*state.freshness) {
    case IndexFreshness::kFresh:
      return "fresh";
    case IndexFreshness::kOld:
      return "old";
    case IndexFreshness::kOfTheFuture:
      return "of the future";
  }
  return "";
}

}  // namespace vt::tool
