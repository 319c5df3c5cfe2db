#include "vistaro/IndexState.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <utility>

namespace vt::tool {
namespace {

void addWatcher(const WatcherRecord& watcher, IndexState& state) {
  const BootInstant now = BootInstant::now();
  if (state.generation && isVouchedFor(state.generation->manifest, watcher, now)) {
    state.freshness = IndexFreshness::kFresh;
    state.age = std::min(state.age.value_or(now.since), now.since - watcher.seenUntil.since);
  }
  // One that has ended, or an indexer that crawls, says nothing of what is watched now.
  const bool isAlive = state.lock && watcher.process > 0 &&
                       state.lock->reason.starts_with(fmt::format("process {} ", watcher.process));
  if (isAlive && !watcher.watch.empty()) state.watcher = watcher;
}

/// Says what a watcher can't, since nobody can write what it has to say.
void addReadOnly(const std::string& folder, IndexState& state) {
  if (!state.watcher || ::access(folder.c_str(), W_OK) == 0 || errno != EROFS) return;
  state.watcher->failure = systemError(EROFS, "write", folder).reason;
}

}  // namespace

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
    state.age = now - state.generation->manifest.began;
  } else {
    state.error = generation.error();
  }
  const Result<IndexLock, StoreError> lock = opened->lock();
  if (!lock && lock.error().kind == StoreError::Kind::kLocked) state.lock = lock.error();
  const Result<WatcherRecord, StoreError> watcher = readWatcherRecord(folder);
  if (watcher) addWatcher(*watcher, state);
  addReadOnly(folder, state);
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
