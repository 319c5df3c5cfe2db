#include "metadata/engine/RowItem.h"

#include <algorithm>

namespace vt {

RowItem::RowItem(const query::QueryMatcher& matcher, const query::AttributeSchema& schema,
                 const IndexedFiles& files)
    : files_(files), searchable_(searchableLiveAttributes(schema)) {
  for (const std::string& name : matcher.attributes()) {
    attributes_.push_back(liveAttributeNamed(name));
  }
  values_.resize(attributes_.size());
}

const Value* RowItem::valueOf(std::size_t slot) {
  const std::optional<LiveAttribute> attribute = attributes_[slot];
  return attribute && files_.tell(*attribute, row_, values_[slot]) ? &values_[slot] : nullptr;
}

bool RowItem::anySearchableText(FunctionRef<bool(const Value&)> predicate) {
  return std::ranges::any_of(searchable_, [&](LiveAttribute attribute) {
    return files_.tell(attribute, row_, searchedValue_) && predicate(searchedValue_);
  });
}

}  // namespace vt
