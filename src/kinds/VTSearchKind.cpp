#include "kinds/VTSearchKind.h"

#include <algorithm>
#include <utility>

#include "foundation/Property.h"
#include "foundation/TextFolding.h"
#include "kinds/KindRegistry.h"

namespace vt {

std::shared_ptr<VTSearchKind> VTSearchKind::initWithTitle(std::string title,
                                                          std::shared_ptr<Array> types) {
  std::shared_ptr<VTSearchKind> kind(new VTSearchKind);
  kind->title_ = std::move(title);
  kind->types_ = std::move(types);
  return kind;
}

std::shared_ptr<ObjectArray<VTSearchKind>> VTSearchKind::allSearchKinds() {
  return KindRegistry::shared()->allKinds();
}

std::shared_ptr<ObjectArray<VTSearchKind>> VTSearchKind::searchableKinds() {
  auto searchable = ObjectArray<VTSearchKind>::make();
  const std::shared_ptr<ObjectArray<VTSearchKind>> all = allSearchKinds();
  for (const std::shared_ptr<VTSearchKind>& kind : *all) {
    if (kind->searchable()) searchable->append(kind);
  }
  std::ranges::stable_sort(searchable->elements(),
                           [](const auto& a, const auto& b) { return a->titleCompare(*b) < 0; });
  return searchable;
}

std::shared_ptr<VTSearchKind> VTSearchKind::kindForContentTypes(const Array* types) {
  const std::shared_ptr<KindRegistry> registry = KindRegistry::shared();
  if (types) {
    for (const Value& type : *types) {
      const std::string* identifier = type.get<std::string>();
      if (!identifier) continue;
      if (std::shared_ptr<VTSearchKind> kind = registry->kindForType(*identifier)) return kind;
    }
  }
  return registry->defaultKind();
}

std::shared_ptr<VTSearchKind> VTSearchKind::defaultKind() {
  return KindRegistry::shared()->defaultKind();
}

std::shared_ptr<VTSearchKind> VTSearchKind::kindWithTitle(const std::string& title) {
  const std::shared_ptr<ObjectArray<VTSearchKind>> kinds = allSearchKinds();
  const auto found =
      std::ranges::find_if(*kinds, [&](const auto& kind) { return kind->title() == title; });
  return found == kinds->end() ? nullptr : *found;
}

int VTSearchKind::titleCompare(const VTSearchKind& other) const {
  const int order =
      foldText(title_, Folding::kCase).compare(foldText(other.title_, Folding::kCase));
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

void VTSearchKind::setSearchable(bool searchable) { searchable_ = searchable; }

void VTSearchKind::setDefaultView(std::int32_t defaultView) { defaultView_ = defaultView; }

void VTSearchKind::setSortorder(std::uint64_t sortorder) { sortorder_ = sortorder; }

const Property* VTSearchKind::propertyNamed(std::string_view key) const {
  using Kind = VTSearchKind;
  static constexpr Property kProperties[] = {
      property<&Kind::title>("title"),
      property<&Kind::types>("types"),
      property<&Kind::searchable, &Kind::setSearchable>("searchable"),
      property<&Kind::defaultView, &Kind::setDefaultView>("defaultView"),
      property<&Kind::sortorder, &Kind::setSortorder>("sortorder"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
