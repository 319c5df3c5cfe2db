#include "search/HitRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Attributes.h"
#include "search/DateAbleSortComparator.h"
#include "search/SearchWorld.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResult.h"

namespace vt {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class HitRecordsTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* path : {"/newest", "/older", "/oldest"}) world_.addHit(path, --modified_);
    const auto manager = VTSearchManager::initWithUser(nullptr);
    query_ = world_.index->MDQueryCreate("q", manager->queryRequestAttributeKeys(),
                                         manager->querySortAttributeKeys(), nullptr);
    world_.index->MDQuerySetSortComparator(
        *query_, dateAbleSortComparatorFunction, &order_,
        MDQueryDeclaredOrder{std::string(kMDItemContentModificationDate), true});
    world_.index->MDQueryExecute(*query_, kMDQuerySynchronous);
  }

  /// A group of all hits, none of which was asked for.
  std::shared_ptr<VTSearchResult> aGroup() {
    const auto found = std::make_shared<const HitRecords>(world_.index, query_);
    const auto records = VTSearchResult::Records::make();
    auto group = VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {}, nullptr);
    for (std::int32_t position = 0; position < 3; ++position) group->appendHit(found, position);
    return group;
  }

  static std::vector<std::string> pathsOf(const VTSearchResult& group) {
    std::vector<std::string> paths;
    for (std::uint64_t i = 0; i < group.count(); ++i) paths.push_back(*group.pathForItemAtIndex(i));
    return paths;
  }

  SearchWorld world_;
  int modified_ = 100;
  const DateAbleSortContext order_{.dateIndex = 0, .attributeCount = 1};
  std::shared_ptr<MDQuery> query_;
};

TEST_F(HitRecordsTest, AreCountedWithoutBeingMade) {
  const std::size_t calls = world_.index->calls().size();
  EXPECT_EQ(aGroup()->count(), 3U);
  EXPECT_EQ(world_.index->calls().size(), calls);
}

TEST_F(HitRecordsTest, AreMadeOnceForWhoAsksForOne) {
  const auto group = aGroup();
  EXPECT_EQ(group->pathForItemAtIndex(1), "/older");
  EXPECT_EQ(group->valueForKey("kMDItemFSSize", 1), Value(12));
  EXPECT_THAT(world_.index->calls(), Contains("MDQueryGetResultAtIndex 1").Times(1));
  EXPECT_THAT(world_.index->calls(), Not(Contains("MDQueryGetResultAtIndex 0")));
}

TEST_F(HitRecordsTest, AreTheSameForWhoAsksForAll) {
  const auto group = aGroup();
  EXPECT_EQ(group->pathForItemAtIndex(2), "/oldest");
  const auto all = group->results();
  ASSERT_EQ(all->size(), 3U);
  EXPECT_EQ(all->at(0)->entries().front().first.str(), "kMDItemPath");
  EXPECT_EQ(all->at(0)->size(), 6U);
  EXPECT_THAT(pathsOf(*group), ElementsAre("/newest", "/older", "/oldest"));
  EXPECT_EQ(group->results(), all);
}

TEST_F(HitRecordsTest, AreSortedWhetherOrNotTheyWereMade) {
  const auto group = aGroup();
  EXPECT_EQ(group->pathForItemAtIndex(1), "/older");
  group->sortByAttribute("kMDItemContentModificationDate");
  EXPECT_THAT(pathsOf(*group), ElementsAre("/oldest", "/older", "/newest"));
}

TEST_F(HitRecordsTest, StayWhatTheyAreWhenOthersAreAppended) {
  const auto group = aGroup();
  group->results()->append(nullptr);
  group->results()->append(Dictionary::make({{"kMDItemPath", "/appended"}}));
  EXPECT_EQ(group->count(), 5U);
  EXPECT_EQ(group->pathForItemAtIndex(3), std::nullopt);
  EXPECT_EQ(group->pathForItemAtIndex(4), "/appended");
  EXPECT_EQ(group->pathForItemAtIndex(0), "/newest");
}

}  // namespace
}  // namespace vt
