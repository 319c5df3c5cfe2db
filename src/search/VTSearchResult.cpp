#include "search/VTSearchResult.h"

#include "directory/VTUser.h"
#include "foundation/ArithmeticError.h"
#include "foundation/Property.h"
#include "kinds/VTSearchKind.h"
#include "platform/Attributes.h"
#include "scopes/VTSearchFolder.h"
#include "search/HitRecords.h"
#include "search/RecordSorting.h"

namespace vt {
namespace {

// The value of VTSearchKind::defaultView() that means thumbnails.
constexpr std::int32_t kThumbnailView = 1;

}  // namespace

std::shared_ptr<VTSearchResult> VTSearchResult::initWithGroupKind(
    std::shared_ptr<VTSearchKind> groupKind, std::shared_ptr<Records> results,
    std::shared_ptr<Folders> searchFolders, std::vector<std::string> attributeKeys,
    std::shared_ptr<VTUser> user) {
  std::shared_ptr<VTSearchResult> group(new VTSearchResult);
  group->thumbnailMode_ = groupKind && groupKind->defaultView() == kThumbnailView;
  group->groupKind_ = std::move(groupKind);
  group->results_ = std::move(results);
  group->searchFolders_ = std::move(searchFolders);
  group->attributeKeys_ = std::move(attributeKeys);
  group->user_ = std::move(user);
  group->sortAttribute_ = kMDItemLastUsedDate;
  return group;
}

std::optional<std::string> VTSearchResult::title() const {
  return groupKind_ ? std::optional(groupKind_->title()) : std::nullopt;
}

std::shared_ptr<VTSearchResult::Records> VTSearchResult::results() const {
  for (std::size_t index = 0; index < unmadePositions_.size(); ++index) recordAt(index);
  unmadePositions_ = {};
  unmade_.reset();
  return results_;
}

void VTSearchResult::appendHit(const std::shared_ptr<const HitRecords>& found,
                               std::int32_t position) {
  unmade_ = found;
  unmadePositions_.push_back(position);
  results_->append(nullptr);
}

const std::shared_ptr<Dictionary>& VTSearchResult::recordAt(std::uint64_t index) const {
  std::shared_ptr<Dictionary>& record = results_->elements().at(index);
  if (!record && index < unmadePositions_.size()) {
    record = unmade_->recordAt(unmadePositions_[index]);
  }
  return record;
}

std::uint64_t VTSearchResult::numberOfPages() const {
  const std::int32_t resultsPerPage = user_ ? user_->resultsPerPage().intValue() : 0;
  if (resultsPerPage == 0) throw ArithmeticError("numberOfPages: no results per page");
  const auto divisor = static_cast<std::uint64_t>(resultsPerPage);
  return count() / divisor + (count() % divisor == 0 ? 0 : 1);
}

void VTSearchResult::sortByAttribute(const std::string& attribute) {
  descendingSort_ = attribute == sortAttribute_ && !descendingSort_;
  sortAttribute_ = attribute;
  if (results()) results_ = sortedRecords(*results_, attribute, descendingSort_);
}

int VTSearchResult::groupSortOrderCompare(const VTSearchResult& other) const {
  const std::uint64_t mine = groupKind_ ? groupKind_->sortorder() : 0;
  const std::uint64_t theirs = other.groupKind_ ? other.groupKind_->sortorder() : 0;
  return mine < theirs ? -1 : mine > theirs ? 1 : 0;
}

std::optional<Value> VTSearchResult::valueForKey(std::string_view key, std::uint64_t index) const {
  if (!results_ || index > count() - 1) return std::nullopt;
  const std::shared_ptr<Dictionary>& record = recordAt(index);
  return record ? record->get(key) : std::nullopt;
}

std::optional<std::string> VTSearchResult::pathForItemAtIndex(std::uint64_t index) const {
  const std::optional<Value> path = valueForKey(kMDItemPath, index);
  const std::string* text = path ? path->get<std::string>() : nullptr;
  return text ? std::optional(*text) : std::nullopt;
}

const Property* VTSearchResult::propertyNamed(std::string_view key) const {
  static constexpr Property kProperties[] = {
      property<&VTSearchResult::groupKind>("groupKind"),
      property<&VTSearchResult::groupName>("groupName"),
      property<&VTSearchResult::title>("title"),
      property<&VTSearchResult::count>("count"),
      property<&VTSearchResult::numberOfPages>("numberOfPages"),
      property<&VTSearchResult::results>("results"),
      property<&VTSearchResult::currentPage, &VTSearchResult::setCurrentPage>("currentPage"),
      property<&VTSearchResult::thumbnailMode, &VTSearchResult::setThumbnailMode>("thumbnailMode"),
      property<&VTSearchResult::sortAttribute>("sortAttribute"),
      property<&VTSearchResult::descendingSort>("descendingSort"),
  };
  return findProperty(kProperties, key);
}

}  // namespace vt
