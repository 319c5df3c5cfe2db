#include "platform/linux/ContentTypeTable.h"

#include <utility>

namespace vt {

std::shared_ptr<const ContentTypes> contentTypesIn(const Resources& resources) {
  auto types = ContentTypes::parse(resources.resource("types", "tsv").value_or(""));
  return types ? std::make_shared<const ContentTypes>(std::move(types).value()) : nullptr;
}

}  // namespace vt
