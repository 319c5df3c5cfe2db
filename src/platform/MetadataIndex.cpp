#include "platform/MetadataIndex.h"

namespace vt {

std::shared_ptr<Dictionary> MetadataIndex::MDItemCopyAttributes(
    MDItem& item, const std::vector<std::string>& names) {
  auto values = Dictionary::make();
  values->reserve(names.size());
  for (const std::string& name : names) {
    if (std::optional<Value> value = MDItemCopyAttribute(item, name)) {
      values->set(name, *std::move(value));
    }
  }
  return values;
}

}  // namespace vt
