#include "search/VTSearchResult.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "foundation/ArithmeticError.h"
#include "kinds/VTSearchKind.h"
#include "scopes/VTSearchFolder.h"
#include "search/SearchWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;

constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();

std::shared_ptr<VTSearchKind> aKind(std::int32_t defaultView = 0, std::uint64_t sortorder = 0) {
  std::shared_ptr<VTSearchKind> kind = VTSearchKind::initWithTitle("Documents", nullptr);
  kind->setDefaultView(defaultView);
  kind->setSortorder(sortorder);
  return kind;
}

std::shared_ptr<VTSearchResult::Records> recordsOf(std::size_t count) {
  std::shared_ptr<VTSearchResult::Records> records = VTSearchResult::Records::make();
  for (std::size_t i = 0; i < count; ++i) {
    records->append(Dictionary::make({{"kMDItemPath", "/" + std::to_string(i)}}));
  }
  return records;
}

std::shared_ptr<VTSearchResult> aGroup(std::size_t count,
                                       const std::shared_ptr<VTUser>& user = nullptr) {
  return VTSearchResult::initWithGroupKind(aKind(), recordsOf(count), nullptr, {}, user);
}

TEST(VTSearchResult, StartsOnPageOneSortedInNameByLastUsedDateDescending) {
  const std::shared_ptr<VTSearchResult> group = aGroup(2);
  EXPECT_EQ(group->currentPage(), 1U);
  EXPECT_EQ(group->sortAttribute(), "kMDItemLastUsedDate");
  EXPECT_TRUE(group->descendingSort());
}

TEST(VTSearchResult, LeavesTheRecordsInTheirOrderWhateverTheSortStateSays) {
  const auto records = VTSearchResult::Records::make({
      Dictionary::make({{"kMDItemLastUsedDate", Date{std::chrono::seconds{1}}}}),
      Dictionary::make({{"kMDItemLastUsedDate", Date{std::chrono::seconds{2}}}}),
  });
  const std::shared_ptr<Dictionary> first = records->at(0);
  const auto group = VTSearchResult::initWithGroupKind(aKind(), records, nullptr, {}, nullptr);
  EXPECT_EQ(group->results()->at(0), first);
}

TEST(VTSearchResult, SharesTheRecordListWithWhoeverFillsIt) {
  const std::shared_ptr<VTSearchResult::Records> records = recordsOf(0);
  const auto group = VTSearchResult::initWithGroupKind(aKind(), records, nullptr, {}, nullptr);
  records->append(Dictionary::make({{"kMDItemPath", "/late"}}));
  EXPECT_EQ(group->results(), records);
  EXPECT_EQ(group->count(), 1U);
  EXPECT_EQ(group->pathForItemAtIndex(0), "/late");
}

TEST(VTSearchResult, ShowsThumbnailsExactlyWhenTheDefaultViewIsOne) {
  for (const std::int32_t view : {-1, 0, 1, 2, 257}) {
    SCOPED_TRACE(view);
    const auto group =
        VTSearchResult::initWithGroupKind(aKind(view), recordsOf(0), nullptr, {}, nullptr);
    EXPECT_EQ(group->thumbnailMode(), view == 1);
  }
}

TEST(VTSearchResult, IsTitledAsItsKind) {
  const std::shared_ptr<VTSearchResult> group = aGroup(0);
  EXPECT_EQ(group->title(), "Documents");
  EXPECT_EQ(group->groupName(), "Documents");
}

TEST(VTSearchResult, OrdersByTheSortOrderOfTheKindsAsUnsignedNumbers) {
  struct Case {
    const char* what;
    std::uint64_t mine;
    std::uint64_t theirs;
    int order;
  };
  const Case cases[] = {
      {"smaller first", 1, 2, -1},
      {"larger last", 2, 1, 1},
      {"equal", 3, 3, 0},
      {"the largest number is not -1", kLargest, 0, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto mine =
        VTSearchResult::initWithGroupKind(aKind(0, c.mine), recordsOf(0), nullptr, {}, nullptr);
    const auto theirs =
        VTSearchResult::initWithGroupKind(aKind(0, c.theirs), recordsOf(0), nullptr, {}, nullptr);
    EXPECT_EQ(mine->groupSortOrderCompare(*theirs), c.order);
  }
}

/// Three records whose names, sizes and dates of last use go in three different orders.
std::shared_ptr<VTSearchResult> aGroupToSort() {
  const auto record = [](const char* name, int size, int lastUsed) {
    return Dictionary::make({{"kMDItemPath", name},
                             {"kMDItemDisplayName", name},
                             {"kMDItemFSSize", size},
                             {"kMDItemLastUsedDate", Date{std::chrono::seconds{lastUsed}}}});
  };
  return VTSearchResult::initWithGroupKind(
      aKind(),
      VTSearchResult::Records::make({record("b", 3, 20), record("A", 2, 30), record("C", 1, 10)}),
      nullptr, {}, nullptr);
}

std::vector<std::string> namesIn(const VTSearchResult& group) {
  std::vector<std::string> names;
  for (std::uint64_t i = 0; i < group.count(); ++i) names.push_back(*group.pathForItemAtIndex(i));
  return names;
}

TEST(VTSearchResult, SortsFirstByAnotherAttributeAscendingThenTheOtherWayRound) {
  const auto group = aGroupToSort();
  group->sortByAttribute("kMDItemDisplayName");
  EXPECT_THAT(namesIn(*group), ElementsAre("A", "b", "C"));
  EXPECT_EQ(group->sortAttribute(), "kMDItemDisplayName");
  EXPECT_FALSE(group->descendingSort());
  group->sortByAttribute("kMDItemDisplayName");
  EXPECT_THAT(namesIn(*group), ElementsAre("C", "b", "A"));
  EXPECT_TRUE(group->descendingSort());
  group->sortByAttribute("kMDItemDisplayName");
  EXPECT_THAT(namesIn(*group), ElementsAre("A", "b", "C"));
  EXPECT_FALSE(group->descendingSort());
}

TEST(VTSearchResult, StartsAscendingWhenItIsSortedByAnotherAttribute) {
  const auto group = aGroupToSort();
  group->sortByAttribute("kMDItemDisplayName");
  group->sortByAttribute("kMDItemDisplayName");
  group->sortByAttribute("kMDItemFSSize");
  EXPECT_THAT(namesIn(*group), ElementsAre("C", "A", "b"));
  EXPECT_EQ(group->sortAttribute(), "kMDItemFSSize");
  EXPECT_FALSE(group->descendingSort());
  group->sortByAttribute("kMDItemDisplayName");
  EXPECT_FALSE(group->descendingSort());
}

TEST(VTSearchResult, SortsAscendingByLastUseAtFirstForItCountsAsDescending) {
  const auto group = aGroupToSort();
  group->sortByAttribute("kMDItemLastUsedDate");
  EXPECT_THAT(namesIn(*group), ElementsAre("C", "b", "A"));
  EXPECT_FALSE(group->descendingSort());
}

TEST(VTSearchResult, ReplacesTheRecordListByTheSortedOne) {
  const auto group = aGroupToSort();
  const auto before = group->results();
  const auto first = before->at(0);
  group->sortByAttribute("kMDItemDisplayName");
  EXPECT_NE(group->results(), before);
  EXPECT_EQ(before->at(0), first);
  EXPECT_EQ(group->results()->at(1), first) << "the very record";
}

TEST(VTSearchResult, NotesTheSortWithoutRecordsToo) {
  for (const auto& records :
       {VTSearchResult::Records::make(), std::shared_ptr<VTSearchResult::Records>()}) {
    const auto group = VTSearchResult::initWithGroupKind(aKind(), records, nullptr, {}, nullptr);
    group->sortByAttribute("kMDItemDisplayName");
    EXPECT_EQ(group->sortAttribute(), "kMDItemDisplayName");
    EXPECT_EQ(group->count(), 0U);
  }
}

TEST(VTSearchResult, FillsPagesByTheResultsPerPageOfTheUser) {
  struct Case {
    const char* what;
    std::size_t count;
    Value perPage;
    std::uint64_t pages;
  };
  const Case cases[] = {
      {"a last page that is not full", 25, 10, 3},
      {"full pages", 20, 10, 2},
      {"no items", 0, 10, 0},
      {"one item", 1, 10, 1},
      {"one more than a page", 11, 10, 2},
      {"as text", 25, "10", 3},
      {"the low 32 bits alone", 25, std::int64_t{0x100000000} + 10, 3},
      {"negative: a divisor that is larger than any count", 25, -10, 1},
      {"negative without items", 0, -10, 0},
  };
  const SearchWorld world;
  const std::shared_ptr<VTUser> ann = world.ann();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ann->setResultsPerPage(c.perPage);
    EXPECT_EQ(aGroup(c.count, ann)->numberOfPages(), c.pages);
  }
}

TEST(VTSearchResult, FillsPagesOfTwentyFiveWhenTheUserChoseNothing) {
  const SearchWorld world;
  EXPECT_EQ(aGroup(26, world.ann())->numberOfPages(), 2U);
}

TEST(VTSearchResult, RaisesAnArithmeticErrorForNoResultsPerPage) {
  const SearchWorld world;
  const std::shared_ptr<VTUser> ann = world.ann();
  for (const Value& perPage :
       {Value(0), Value("none"), Value(0.5), Value(std::int64_t{0x100000000})}) {
    ann->setResultsPerPage(perPage);
    EXPECT_THROW((void)aGroup(25, ann)->numberOfPages(), ArithmeticError);
    EXPECT_THROW((void)aGroup(0, ann)->numberOfPages(), ArithmeticError);
  }
}

TEST(VTSearchResult, RaisesAnArithmeticErrorForPagesWithoutAUser) {
  EXPECT_THROW((void)aGroup(25)->numberOfPages(), ArithmeticError);
}

TEST(VTSearchResult, GivesTheValuesOfARecordAndNilPastTheEnd) {
  const auto records = VTSearchResult::Records::make({
      Dictionary::make({{"kMDItemPath", "/a"}, {"kMDItemFSSize", 3}}),
      Dictionary::make({{"kMDItemPath", "/b"}}),
  });
  const auto group = VTSearchResult::initWithGroupKind(aKind(), records, nullptr, {}, nullptr);
  EXPECT_EQ(group->valueForKey("kMDItemFSSize", 0), Value(3));
  EXPECT_EQ(group->valueForKey("kMDItemFSSize", 1), std::nullopt);
  EXPECT_EQ(group->valueForKey("kMDItemPath", 1), Value("/b"));
  EXPECT_EQ(group->valueForKey("kMDItemPath", 2), std::nullopt);
  EXPECT_EQ(group->valueForKey("kMDItemPath", kLargest), std::nullopt);
  EXPECT_EQ(group->pathForItemAtIndex(1), "/b");
  EXPECT_EQ(group->pathForItemAtIndex(2), std::nullopt);
}

TEST(VTSearchResult, RaisesOutOfRangeForAnyItemOfAnEmptyGroup) {
  const std::shared_ptr<VTSearchResult> group = aGroup(0);
  for (const std::uint64_t index : {std::uint64_t{0}, std::uint64_t{1}, kLargest}) {
    SCOPED_TRACE(index);
    EXPECT_THROW((void)group->valueForKey("kMDItemPath", index), std::out_of_range);
    EXPECT_THROW((void)group->pathForItemAtIndex(index), std::out_of_range);
  }
}

TEST(VTSearchResult, TakesNilForEverything) {
  const auto group = VTSearchResult::initWithGroupKind(nullptr, nullptr, nullptr, {}, nullptr);
  EXPECT_EQ(group->title(), std::nullopt);
  EXPECT_EQ(group->count(), 0U);
  EXPECT_FALSE(group->thumbnailMode());
  EXPECT_EQ(group->valueForKey("kMDItemPath", 0), std::nullopt);
  EXPECT_EQ(group->groupSortOrderCompare(*aGroup(0)), 0);
}

TEST(VTSearchResult, SetsPageAndThumbnailModeUnchecked) {
  const std::shared_ptr<VTSearchResult> group = aGroup(1);
  group->setCurrentPage(0);
  EXPECT_EQ(group->currentPage(), 0U);
  group->setCurrentPage(kLargest);
  EXPECT_EQ(group->currentPage(), kLargest);
  group->setThumbnailMode(/*thumbnails=*/true);
  EXPECT_TRUE(group->thumbnailMode());
}

TEST(VTSearchResult, ReadsEveryPropertyByKey) {
  const SearchWorld world;
  const std::shared_ptr<VTSearchResult> group = aGroup(26, world.ann());
  EXPECT_EQ(group->valueForKey("groupKind")->object(), group->groupKind());
  EXPECT_EQ(group->valueForKey("groupName"), Value("Documents"));
  EXPECT_EQ(group->valueForKey("title"), Value("Documents"));
  EXPECT_EQ(group->valueForKey("count"), Value(26));
  EXPECT_EQ(group->valueForKey("numberOfPages"), Value(2));
  EXPECT_EQ(group->valueForKey("results")->object(), group->results());
  EXPECT_EQ(group->valueForKey("currentPage"), Value(1));
  EXPECT_EQ(group->valueForKey("thumbnailMode"), Value(false));
  EXPECT_EQ(group->valueForKey("sortAttribute"), Value("kMDItemLastUsedDate"));
  EXPECT_EQ(group->valueForKey("descendingSort"), Value(true));
}

TEST(VTSearchResult, TakesPageAndThumbnailModeAloneByKey) {
  const std::shared_ptr<VTSearchResult> group = aGroup(1);
  group->setValue("7", "currentPage");
  group->setValue(1, "thumbnailMode");
  EXPECT_EQ(group->currentPage(), 7U);
  EXPECT_TRUE(group->thumbnailMode());
  for (const char* key : {"groupKind", "groupName", "title", "count", "numberOfPages", "results",
                          "sortAttribute", "descendingSort", "kMDItemPath"}) {
    SCOPED_TRACE(key);
    EXPECT_THROW(group->setValue(1, key), UndefinedKeyError);
  }
  EXPECT_THROW(group->setValue(std::nullopt, "currentPage"), InvalidArgumentError);
  EXPECT_THROW(group->setValue(nullptr, "thumbnailMode"), InvalidArgumentError);
}

}  // namespace
}  // namespace vt
