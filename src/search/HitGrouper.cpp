#include "search/HitGrouper.h"

#include "directory/VTUser.h"
#include "kinds/VTSearchKind.h"
#include "scopes/VTSearchFolder.h"
#include "search/HitRecords.h"
#include "search/VTSearchResult.h"

namespace vt {
namespace {

// Capacities to start with: most searches find fewer kinds than this, and groups of about a page
// or of thousands of records.
constexpr std::size_t kExpectedGroups = 15;
constexpr std::size_t kExpectedRecords = 500;

}  // namespace

HitGrouper::HitGrouper(const std::shared_ptr<MetadataIndex>& index,
                       const std::shared_ptr<MDQuery>& query, Search search, const VTUser* filter)
    : records_(std::make_shared<const HitRecords>(index, query)),
      search_(std::move(search)),
      filter_(filter),
      makesRecordsLater_(!filter && index->hitsAreFiles()),
      groups_(std::make_shared<ObjectArray<VTSearchResult>>()) {
  groupsByTitle_.reserve(kExpectedGroups);
}

void HitGrouper::addHit(std::int32_t position) {
  if (makesRecordsLater_) {
    const std::optional<Value> tree = records_->treeAt(position);
    VTSearchResult* const group = groupForTree(tree ? tree->array() : nullptr);
    if (group) group->appendHit(records_, position);
    return;
  }
  std::optional<Value> path = records_->pathAt(position);
  if (!path) return;
  if (filter_ && !filter_->accessAllowedToPath(*path->get<std::string>())) return;
  const std::optional<Value> tree = records_->treeAt(position);
  VTSearchResult* const group = groupForTree(tree ? tree->array() : nullptr);
  if (group) group->results()->append(records_->recordAt(position, *std::move(path), tree));
}

VTSearchResult* HitGrouper::groupForTree(const std::shared_ptr<Array>& tree) {
  const auto known = groupsByTree_.find(tree);
  if (known != groupsByTree_.end()) return known->second;
  VTSearchResult* const group = groupOfKindFor(tree.get());
  groupsByTree_.emplace(tree, group);
  return group;
}

VTSearchResult* HitGrouper::groupOfKindFor(const Array* tree) {
  const std::shared_ptr<VTSearchKind> kind = VTSearchKind::kindForContentTypes(tree);
  if (!kind) return nullptr;
  VTSearchResult*& group = groupsByTitle_[kind->title()];
  if (!group) {
    auto list = std::make_shared<ObjectArray<Dictionary>>();
    list->elements().reserve(kExpectedRecords);
    groups_->append(VTSearchResult::initWithGroupKind(kind, std::move(list), search_.searchFolders,
                                                      search_.attributeKeys, search_.user));
    group = groups_->elements().back().get();
  }
  return group;
}

}  // namespace vt
