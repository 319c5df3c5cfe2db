#include "search/VTSearchManager.h"

#include <algorithm>

#include "directory/VTUser.h"
#include "foundation/NSLog.h"
#include "kinds/VTSearchKind.h"
#include "platform/Attributes.h"
#include "platform/Platform.h"
#include "platform/Process.h"
#include "scopes/FolderPaths.h"
#include "scopes/VTSearchFolder.h"
#include "search/DateAbleSortComparator.h"
#include "search/HitGrouper.h"
#include "search/UserIdentityScope.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

double now() { return secondsSinceReferenceDate(Platform::current().process().now()); }

void sortBySortOrder(ObjectArray<VTSearchResult>& groups) {
  std::ranges::stable_sort(groups.elements(), [](const auto& a, const auto& b) {
    return a->groupSortOrderCompare(*b) < 0;
  });
}

}  // namespace

std::shared_ptr<VTSearchManager> VTSearchManager::initWithUser(std::shared_ptr<VTUser> user) {
  VTSettings::sharedInstance();
  VTSearchKind::defaultKind();
  Platform::current().metadataIndex().prepare();
  return std::shared_ptr<VTSearchManager>(new VTSearchManager(std::move(user)));
}

std::vector<std::string> VTSearchManager::queryRequestAttributeKeys() const {
  return {std::string(kMDItemDisplayName), std::string(kMDItemContentTypeTree),
          std::string(kMDItemContentModificationDate), std::string(kMDItemLastUsedDate),
          std::string(kMDItemFSSize)};
}

std::vector<std::string> VTSearchManager::querySortAttributeKeys() const {
  return {std::string(kMDItemContentModificationDate)};
}

std::string VTSearchManager::groupAttributeName() const {
  return std::string(kMDItemContentTypeTree);
}

std::shared_ptr<VTSearchResultContainer> VTSearchManager::executeQuery(
    const std::string& query, const std::shared_ptr<ObjectArray<VTSearchFolder>>& searchFolders) {
  lastRejection_.reset();
  lastNotes_ = {};
  lastSearchWasCut_ = false;
  const double start = now();
  std::shared_ptr<Groups> groups;
  {
    const UserIdentityScope identity(user_.get());
    const std::shared_ptr<MDQuery> search = createQuery(query);
    if (!search) return nullptr;
    groups =
        groupsFoundBy(search, query, searchFolders, identity.actsForUser() ? nullptr : user_.get());
    if (lastNotes_.walkWasGivenUp) return nullptr;
    NSLog("Finished executing query in %f seconds", now() - start);
  }
  if (groups) sortBySortOrder(*groups);
  return VTSearchResultContainer::initWithUser(user_, std::move(groups));
}

std::shared_ptr<MDQuery> VTSearchManager::createQuery(const std::string& query) {
  MDQueryRejection rejection;
  std::shared_ptr<MDQuery> search = Platform::current().metadataIndex().MDQueryCreate(
      query, queryRequestAttributeKeys(), querySortAttributeKeys(), &rejection);
  if (!search) {
    NSLog("Unable to create query!");
    lastRejection_ = std::move(rejection);
  }
  return search;
}

std::shared_ptr<VTSearchManager::Groups> VTSearchManager::groupsFoundBy(
    const std::shared_ptr<MDQuery>& search, const std::string& query,
    const std::shared_ptr<ObjectArray<VTSearchFolder>>& searchFolders, const VTUser* filter) {
  MetadataIndex& index = Platform::current().metadataIndex();
  const std::vector<std::string> sortAttributes = querySortAttributeKeys();
  const DateAbleSortContext context{
      .dateIndex = 0, .attributeCount = static_cast<std::int32_t>(sortAttributes.size())};
  index.MDQuerySetSortComparator(
      *search, dateAbleSortComparatorFunction, &context,
      MDQueryDeclaredOrder{.attribute = sortAttributes.front(), .descending = true});
  const std::vector<std::string> scope =
      searchFolders ? pathsCoveredBy(*searchFolders) : std::vector<std::string>();
  index.MDQuerySetSearchScope(*search, scope, 0);
  if (longestWalk_) index.MDQuerySetLongestWalk(*search, *longestWalk_);
  if (!index.MDQueryExecute(*search, kMDQuerySynchronous)) {
    lastNotes_ = index.MDQueryCopyNotes(*search);
    if (!lastNotes_.walkWasGivenUp) NSLog("Query failed for some reason!");
    return nullptr;
  }
  index.MDQueryDisableUpdates(*search);
  lastNotes_ = index.MDQueryCopyNotes(*search);
  const std::shared_ptr<VTSettings> settings = VTSettings::sharedInstance();
  settings->setSearchCount(settings->searchCount() + 1);
  const std::int32_t count = index.MDQueryGetResultCount(*search);
  NSLog("Found %d elements for query %@", count, query);

  HitGrouper grouper(Platform::current().sharedMetadataIndex(), search,
                     {searchFolders, queryRequestAttributeKeys(), user_}, filter);
  const std::int32_t visited = std::min(count, kMostVisitedHits);
  lastSearchWasCut_ = visited < count;
  for (std::int32_t position = 0; position < visited; ++position) grouper.addHit(position);
  return grouper.groups();
}

}  // namespace vt
