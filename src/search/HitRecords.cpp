#include "search/HitRecords.h"

#include <string>
#include <utility>

#include "platform/Attributes.h"

namespace vt {

HitRecords::HitRecords(std::shared_ptr<MetadataIndex> index, std::shared_ptr<MDQuery> query)
    : index_(std::move(index)),
      query_(std::move(query)),
      pathKey_(kMDItemPath),
      keys_{Key(kMDItemDisplayName), Key(kMDItemContentModificationDate),
            Key(kMDItemContentTypeTree), Key(kMDItemFSSize), Key(kMDItemLastUsedDate)} {}

std::optional<Value> HitRecords::pathAt(std::int32_t position) const {
  const std::shared_ptr<MDItem> item = index_->MDQueryGetResultAtIndex(*query_, position);
  std::optional<Value> path = index_->MDItemCopyAttribute(*item, kMDItemPath);
  const std::string* text = path ? path->get<std::string>() : nullptr;
  return text && !text->empty() ? std::move(path) : std::nullopt;
}

std::optional<Value> HitRecords::treeAt(std::int32_t position) const {
  return index_->MDQueryGetAttributeValueOfResultAtIndex(*query_, kMDItemContentTypeTree, position);
}

std::shared_ptr<Dictionary> HitRecords::recordAt(std::int32_t position) const {
  return recordAt(position, pathAt(position).value(), treeAt(position));
}

std::shared_ptr<Dictionary> HitRecords::recordAt(std::int32_t position, Value path,
                                                 const std::optional<Value>& tree) const {
  auto record = std::make_shared<Dictionary>();
  record->reserve(1 + keys_.size());
  record->append(pathKey_, std::move(path));
  for (const Key& key : keys_) {
    std::optional<Value> value =
        key == kMDItemContentTypeTree
            ? tree
            : index_->MDQueryGetAttributeValueOfResultAtIndex(*query_, key.str(), position);
    // The record ends here: readers take what follows a gap as absent too.
    if (!value) break;
    record->append(key, *std::move(value));
  }
  return record;
}

}  // namespace vt
