#include "metadata/live/LiveSearch.h"

#include <unordered_set>
#include <utility>

#include "metadata/live/FolderWalk.h"
#include "metadata/live/LiveItem.h"
#include "metadata/live/SearchScopes.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;

class Collector final : public FolderVisitor {
 public:
  Collector(const query::QueryMatcher& matcher, LiveItem& item, LiveHits& hits,
            const LiveSearch::Progress& progress, std::optional<Clock::time_point> deadline)
      : matcher_(matcher), item_(item), hits_(hits), progress_(progress), deadline_(deadline) {}

  /// `scopes` are the canonical paths of all.
  void startScope(const SearchScope& scope, const std::unordered_set<std::string>& scopes) {
    scope_ = &scope;
    scopes_ = &scopes;
  }

  void visit(const WalkedEntry& entry) override {
    item_.moveTo(entry);
    // The query first: most entries fail it by their names alone, at no cost to the file system.
    if (!matcher_.matches(item_) || !item_.isReadable()) return;
    hits_.add(entry.folderPath, entry.name, item_.type(), *item_.status());
  }

  // Another scope's folder is left to that scope, so nested ones give each file once.
  bool entersFolder(std::string_view folderPath, std::string_view name) override {
    if (scopes_->size() == 1) return true;
    const std::string_view below = folderPath.substr(scope_->path.size());
    std::string folder = scope_->canonicalPath == "/" ? std::string() : scope_->canonicalPath;
    folder += !below.empty() && !below.starts_with('/') ? "/" : "";
    folder += below;
    return !scopes_->contains(joinPath(folder, name));
  }

  void leaveListing(std::size_t entries) override {
    ++folders_;
    entries_ += entries;
    if (progress_) progress_(folders_, entries_);
  }

  bool goesOn() override {
    hasGivenUp_ = hasGivenUp_ || (deadline_ && Clock::now() > *deadline_);
    return !hasGivenUp_;
  }

  bool hasGivenUp() const { return hasGivenUp_; }

 private:
  const query::QueryMatcher& matcher_;
  LiveItem& item_;
  LiveHits& hits_;
  const LiveSearch::Progress& progress_;
  const std::optional<Clock::time_point> deadline_;
  bool hasGivenUp_ = false;
  std::uint64_t folders_ = 0;
  std::uint64_t entries_ = 0;
  const SearchScope* scope_ = nullptr;
  const std::unordered_set<std::string>* scopes_ = nullptr;
};

}  // namespace

LiveSearchResult LiveSearch::run(const std::vector<std::string>& scopes,
                                 const Credentials& who) const {
  const auto deadline = limit_ ? std::optional(Clock::now() + *limit_) : std::nullopt;
  LiveSearchResult result;
  const AccessJudge judge(who);
  SearchScopes found = findSearchScopes(scopes, judge);
  result.unusableScopes = std::move(found.unusable);
  std::unordered_set<std::string> canonicalPaths;
  for (const SearchScope& scope : found.usable) canonicalPaths.insert(scope.canonicalPath);

  LiveItem item(matcher_, schema_, tables_, judge);
  Collector collector(matcher_, item, result.hits, progress_, deadline);
  for (const SearchScope& scope : found.usable) {
    collector.startScope(scope, canonicalPaths);
    if (!FolderWalk(judge, collector).walk(scope.folder.get(), scope.path)) {
      result.unusableScopes.push_back(scope.given);
    }
  }
  result.wasGivenUp = collector.hasGivenUp();
  if (!result.wasGivenUp) result.hits.sortNewestFirst();
  return result;
}

}  // namespace vt
