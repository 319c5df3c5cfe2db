#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/Array.h"
#include "foundation/ObjectArray.h"
#include "platform/MetadataIndex.h"

namespace vt {

class HitRecords;
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

  /// `filter` is borrowed: hits at paths to which it has no access are left out. Nullptr leaves
  /// none out; where hits are files, records are then made only when somebody asks for them.
  HitGrouper(const std::shared_ptr<MetadataIndex>& index, const std::shared_ptr<MDQuery>& query,
             Search search, const VTUser* filter);

  /// Puts the hit at `position` at the end of its kind's group, unless it lacks a path, is filtered
  /// out, or is of no kind.
  void addHit(std::int32_t position);

  /// The groups in the order of their first hits.
  std::shared_ptr<ObjectArray<VTSearchResult>> groups() const { return groups_; }

 private:
  /// The group of the kind that hits with this type tree belong to; nullptr when there is none.
  /// `tree` may be nullptr.
  VTSearchResult* groupForTree(const std::shared_ptr<Array>& tree);
  VTSearchResult* groupOfKindFor(const Array* tree);

  const std::shared_ptr<const HitRecords> records_;
  const Search search_;
  const VTUser* filter_;
  const bool makesRecordsLater_;

  std::shared_ptr<ObjectArray<VTSearchResult>> groups_;
  std::unordered_map<std::string, VTSearchResult*> groupsByTitle_;
  // By identity: an index gives hits of one type the same array. Keeping the arrays alive keeps
  // their addresses from being used again.
  std::unordered_map<std::shared_ptr<Array>, VTSearchResult*> groupsByTree_;
};

}  // namespace vt
