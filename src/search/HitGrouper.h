#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/Key.h"
#include "foundation/ObjectArray.h"
#include "platform/MetadataIndex.h"

namespace vt {

class VTSearchFolder;
class VTSearchResult;
class VTUser;

/// Turns the hits of an executed query into records, and these into groups by kind of content.
class HitGrouper {
 public:
  /// What every group is told of the search that it comes from.
  struct Search {
    std::shared_ptr<ObjectArray<VTSearchFolder>> searchFolders;
    std::vector<std::string> attributeKeys;
    std::shared_ptr<VTUser> user;
  };

  /// `index` and `query` are borrowed, and so is `filter`: hits at paths to which it has no access
  /// are left out. Nullptr leaves none out.
  HitGrouper(MetadataIndex& index, MDQuery& query, Search search, const VTUser* filter);

  /// Puts the hit at `position` at the end of its kind's group, unless it lacks a path, is filtered
  /// out, or is of no kind.
  void addHit(std::int32_t position);

  /// The groups in the order of their first hits.
  std::shared_ptr<ObjectArray<VTSearchResult>> groups() const { return groups_; }

 private:
  using Records = ObjectArray<Dictionary>;

  /// The records of the kind that hits with this type tree belong to; nullptr when there is none.
  /// `tree` may be nullptr.
  Records* recordsForTree(const std::shared_ptr<Array>& tree);
  Records* recordsOfKindFor(const Array* tree);
  std::shared_ptr<Dictionary> makeRecord(Value path, const std::optional<Value>& tree,
                                         std::int32_t position);

  MetadataIndex& index_;
  MDQuery& query_;
  const Search search_;
  const VTUser* filter_;
  // Made once, so that a key costs a record no more than a counter.
  const Key pathKey_;
  const std::array<Key, 5> keys_;

  std::shared_ptr<ObjectArray<VTSearchResult>> groups_;
  std::unordered_map<std::string, Records*> recordsByTitle_;
  // By identity: an index gives hits of one type the same array. Keeping the arrays alive keeps
  // their addresses from being used again.
  std::unordered_map<std::shared_ptr<Array>, Records*> recordsByTree_;
};

}  // namespace vt
