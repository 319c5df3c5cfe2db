#include "search/HitGrouper.h"

#include "directory/VTUser.h"
#include "kinds/VTSearchKind.h"
#include "platform/Attributes.h"
#include "scopes/VTSearchFolder.h"
#include "search/VTSearchResult.h"

namespace vt {
namespace {

// Capacities to start with: most searches find fewer kinds than this, and groups of about a page
// or of thousands of records.
constexpr std::size_t kExpectedGroups = 15;
constexpr std::size_t kExpectedRecords = 500;

}  // namespace

HitGrouper::HitGrouper(MetadataIndex& index, MDQuery& query, Search search, const VTUser* filter)
    : index_(index),
      query_(query),
      search_(std::move(search)),
      filter_(filter),
      pathKey_(kMDItemPath),
      keys_{Key(kMDItemDisplayName), Key(kMDItemContentModificationDate),
            Key(kMDItemContentTypeTree), Key(kMDItemFSSize), Key(kMDItemLastUsedDate)},
      groups_(std::make_shared<ObjectArray<VTSearchResult>>()) {
  recordsByTitle_.reserve(kExpectedGroups);
}

void HitGrouper::addHit(std::int32_t position) {
  const std::shared_ptr<MDItem> item = index_.MDQueryGetResultAtIndex(query_, position);
  std::optional<Value> path = index_.MDItemCopyAttribute(*item, kMDItemPath);
  const std::string* pathText = path ? path->get<std::string>() : nullptr;
  if (!pathText || pathText->empty()) return;
  if (filter_ && !filter_->accessAllowedToPath(*pathText)) return;

  const std::optional<Value> tree =
      index_.MDQueryGetAttributeValueOfResultAtIndex(query_, kMDItemContentTypeTree, position);
  Records* records = recordsForTree(tree ? tree->array() : nullptr);
  if (records) records->append(makeRecord(*std::move(path), tree, position));
}

HitGrouper::Records* HitGrouper::recordsForTree(const std::shared_ptr<Array>& tree) {
  const auto known = recordsByTree_.find(tree);
  if (known != recordsByTree_.end()) return known->second;
  Records* records = recordsOfKindFor(tree.get());
  recordsByTree_.emplace(tree, records);
  return records;
}

HitGrouper::Records* HitGrouper::recordsOfKindFor(const Array* tree) {
  const std::shared_ptr<VTSearchKind> kind = VTSearchKind::kindForContentTypes(tree);
  if (!kind) return nullptr;
  Records*& records = recordsByTitle_[kind->title()];
  if (!records) {
    auto list = std::make_shared<Records>();
    list->elements().reserve(kExpectedRecords);
    records = list.get();
    groups_->append(VTSearchResult::initWithGroupKind(kind, std::move(list), search_.searchFolders,
                                                      search_.attributeKeys, search_.user));
  }
  return records;
}

std::shared_ptr<Dictionary> HitGrouper::makeRecord(Value path, const std::optional<Value>& tree,
                                                   std::int32_t position) {
  auto record = std::make_shared<Dictionary>();
  record->reserve(1 + keys_.size());
  record->append(pathKey_, std::move(path));
  for (const Key& key : keys_) {
    std::optional<Value> value =
        key == kMDItemContentTypeTree
            ? tree
            : index_.MDQueryGetAttributeValueOfResultAtIndex(query_, key.str(), position);
    // The record ends here: readers take what follows a gap as absent too.
    if (!value) break;
    record->append(key, *std::move(value));
  }
  return record;
}

}  // namespace vt
