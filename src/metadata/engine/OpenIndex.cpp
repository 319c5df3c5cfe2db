#include "metadata/engine/OpenIndex.h"

#include <optional>
#include <utility>

namespace vt {

std::shared_ptr<const OpenIndex> openIndex(std::shared_ptr<const Segment> segment,
                                           const ContentTypes& types) {
  auto open = std::make_shared<OpenIndex>();
  open->segment = segment->columns();
  open->identity = segment->identity();
  open->types.reserve(open->segment.typeIdentifiers.size());
  for (const std::string_view identifier : open->segment.typeIdentifiers) {
    const std::optional<ContentTypeId> type = types.find(identifier);
    if (!type) return nullptr;
    open->types.push_back(*type);
  }
  open->memory = std::move(segment);
  return open;
}

}  // namespace vt
