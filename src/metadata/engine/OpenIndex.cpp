#include "metadata/engine/OpenIndex.h"

#include <string_view>
#include <utility>

namespace vt {

std::shared_ptr<const OpenIndex> openIndex(IndexGeneration generation, const ContentTypes& types) {
  auto open = std::make_shared<OpenIndex>(columnsOf(generation));
  open->base = generation.segment->identity();
  if (generation.delta) open->delta = generation.delta->identity();
  for (const std::string_view identifier : open->folders().typeIdentifiers) {
    const std::optional<ContentTypeId> type = types.find(identifier);
    if (!type) return nullptr;
    open->types.push_back(*type);
  }
  open->memory = std::move(generation);
  return open;
}

}  // namespace vt
