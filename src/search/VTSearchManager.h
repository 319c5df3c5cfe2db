#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"
#include "platform/MetadataIndex.h"

namespace vt {

class VTSearchFolder;
class VTSearchResult;
class VTSearchResultContainer;
class VTUser;

/// Runs queries on behalf of one user, and groups what they find by kind of content.
class VTSearchManager final : public VTObject {
 public:
  /// Bounds the work of one search; nobody pages further.
  static constexpr std::int32_t kMostVisitedHits = 10'000;

  /// `initWithUser:`
  /// `user` may be nil: one then searches as whoever runs the process, and sees every hit.
  ///
  /// Also loads the settings and the table of kinds and prepares the index, so that none of them is
  /// opened with the rights of a searching user.
  static std::shared_ptr<VTSearchManager> initWithUser(std::shared_ptr<VTUser> user);

  /// `executeQuery:forSearchFolders:`
  /// Finds what `query`, in the metadata query language, describes below the paths of
  /// `searchFolders` (nil as empty, which finds nothing) and returns one group per kind that had
  /// hits, by the kinds' sort order. Each group lists its hits newest modification first.
  ///
  /// At most the newest kMostVisitedHits hits are looked at, those that the user may not read
  /// included.
  ///
  /// Nil, with a log line, when the index rejects the query; lastRejection() then says why. A query
  /// that cannot be executed gives a container without groups, with a log line.
  ///
  /// Nil as well when the search walked for longer than it may, see setLongestWalk().
  ///
  /// A process of root's acts as the user for the span of the call, see UserIdentityScope; any
  /// other asks the user's accessAllowedToPath() for each hit.
  std::shared_ptr<VTSearchResultContainer> executeQuery(
      const std::string& query, const std::shared_ptr<ObjectArray<VTSearchFolder>>& searchFolders);

  /// How long the searches to come may walk the files when the index cannot answer them: one that
  /// takes longer is given up, as lastNotes() then says. Without limit at first.
  void setLongestWalk(std::chrono::milliseconds limit) { longestWalk_ = limit; }

  /// Why the last query was rejected; nothing when it was not.
  const std::optional<MDQueryRejection>& lastRejection() const { return lastRejection_; }

  /// What to say of the last query that was executed beside its hits, or that was given up.
  const MDQueryNotes& lastNotes() const { return lastNotes_; }
  /// Whether the last query had more hits than are looked at.
  bool lastSearchWasCut() const { return lastSearchWasCut_; }

  /// The attributes that a query reads of its hits.
  std::vector<std::string> queryRequestAttributeKeys() const;
  /// The attributes by which a query is sorted.
  std::vector<std::string> querySortAttributeKeys() const;
  /// The attribute by which hits are grouped.
  std::string groupAttributeName() const;

 private:
  using Groups = ObjectArray<VTSearchResult>;

  explicit VTSearchManager(std::shared_ptr<VTUser> user) : user_(std::move(user)) {}

  std::shared_ptr<MDQuery> createQuery(const std::string& query);
  /// Executes `search` and groups its hits; nullptr when it cannot be executed, or is given up.
  /// Hits that `filter` may not read are left out; none are when it is nullptr.
  std::shared_ptr<Groups> groupsFoundBy(
      const std::shared_ptr<MDQuery>& search, const std::string& query,
      const std::shared_ptr<ObjectArray<VTSearchFolder>>& searchFolders, const VTUser* filter);

  std::shared_ptr<VTUser> user_;
  std::optional<std::chrono::milliseconds> longestWalk_;
  std::optional<MDQueryRejection> lastRejection_;
  MDQueryNotes lastNotes_;
  bool lastSearchWasCut_ = false;
};

}  // namespace vt
