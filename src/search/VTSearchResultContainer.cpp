#include "search/VTSearchResultContainer.h"

#include <algorithm>

#include "directory/VTUser.h"
#include "foundation/Array.h"
#include "foundation/Property.h"
#include "kinds/VTSearchKind.h"
#include "search/VTSearchResult.h"

namespace vt {

std::shared_ptr<VTSearchResultContainer> VTSearchResultContainer::initWithUser(
    std::shared_ptr<VTUser> user, std::shared_ptr<Groups> results) {
  std::shared_ptr<VTSearchResultContainer> container(new VTSearchResultContainer);
  container->user_ = std::move(user);
  container->results_ = std::move(results);
  return container;
}

std::shared_ptr<VTSearchResult> VTSearchResultContainer::resultAtIndex(std::uint64_t index) const {
  if (!results_ || index > count()) return nullptr;
  return results_->at(index);
}

std::shared_ptr<VTSearchResult> VTSearchResultContainer::resultWithGroupName(
    const std::string& name) const {
  if (!results_) return nullptr;
  const auto found = std::ranges::find_if(
      *results_,
      [&](const std::shared_ptr<VTSearchResult>& group) { return group->title() == name; });
  return found == results_->end() ? nullptr : *found;
}

void VTSearchResultContainer::removeResultsWithContentType(const std::string& contentType) {
  if (!results_) return;
  const std::shared_ptr<Array> onlyThisType = Array::make({contentType});
  const auto found =
      std::ranges::find_if(*results_, [&](const std::shared_ptr<VTSearchResult>& group) {
        const std::shared_ptr<VTSearchKind> kind = group->groupKind();
        const std::shared_ptr<Array> types = kind ? kind->types() : nullptr;
        return types && *types == *onlyThisType;
      });
  if (found == results_->end()) return;
  auto others = std::make_shared<Groups>(results_->elements());
  others->elements().erase(others->begin() + (found - results_->begin()));
  results_ = std::move(others);
}

const Property* VTSearchResultContainer::propertyNamed(std::string_view key) const {
  static constexpr Property kProperties[] = {
      property<&VTSearchResultContainer::results>("results"),
      property<&VTSearchResultContainer::count>("count"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
