#include "platform/memory/MemoryMetadataIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/memory/MemoryIdentity.h"

namespace vt {
namespace {

using testing::ElementsAre;

int bySizeAscending(const Value* const a[], const Value* const b[], const void* context) {
  ++*static_cast<int*>(const_cast<void*>(context));
  if (!a[0]) return 1;
  if (!b[0]) return -1;
  return compareNaturally(*a[0], *b[0]);
}

std::shared_ptr<MDQuery> aQuery(MetadataIndex& index, const std::vector<std::string>& values = {},
                                const std::vector<std::string>& sorting = {}) {
  return index.MDQueryCreate("a == {}", values, sorting);
}

std::vector<std::string> paths(MemoryMetadataIndex& index, MDQuery& query) {
  std::vector<std::string> found;
  for (std::int32_t i = 0; i < index.MDQueryGetResultCount(query); ++i) {
    const std::shared_ptr<MDItem> item = index.MDQueryGetResultAtIndex(query, i);
    found.push_back(*index.MDItemCopyAttribute(*item, "kMDItemPath")->get<std::string>());
  }
  return found;
}

TEST(MemoryMetadataIndex, GivesItsTableInOrderWithoutAComparator) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/b"}});
  index.addHit({{"kMDItemPath", "/a"}});
  const std::shared_ptr<MDQuery> query = aQuery(index);
  ASSERT_TRUE(index.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_THAT(paths(index, *query), ElementsAre("/b", "/a"));
}

TEST(MemoryMetadataIndex, SortsByTheComparatorAndKeepsEqualHitsInOrder) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/none"}});
  index.addHit({{"kMDItemPath", "/nine"}, {"kMDItemFSSize", 9}});
  index.addHit({{"kMDItemPath", "/three"}, {"kMDItemFSSize", 3}});
  index.addHit({{"kMDItemPath", "/none too"}});
  index.addHit({{"kMDItemPath", "/three too"}, {"kMDItemFSSize", 3}});
  const std::shared_ptr<MDQuery> query = aQuery(index, {}, {"kMDItemFSSize"});
  int calls = 0;
  index.MDQuerySetSortComparator(*query, bySizeAscending, &calls, std::nullopt);
  ASSERT_TRUE(index.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_THAT(paths(index, *query),
              ElementsAre("/three", "/three too", "/nine", "/none", "/none too"));
  EXPECT_GT(calls, 0);
}

TEST(MemoryMetadataIndex, GivesValuesOfTheValueListOnly) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/a"}, {"kMDItemFSSize", 7}});
  const std::shared_ptr<MDQuery> query = aQuery(index, {"kMDItemFSSize", "kMDItemDisplayName"});
  ASSERT_TRUE(index.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_EQ(index.MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemFSSize", 0), Value(7));
  EXPECT_EQ(index.MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemDisplayName", 0),
            std::nullopt);
  EXPECT_EQ(index.MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemPath", 0), std::nullopt);
}

TEST(MemoryMetadataIndex, FindsAnItemByItsPath) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/a"}, {"kMDItemFSSize", 7}});
  const std::shared_ptr<MDItem> item = index.MDItemCreate("/a");
  ASSERT_TRUE(item);
  EXPECT_EQ(index.MDItemCopyAttribute(*item, "kMDItemFSSize"), Value(7));
  EXPECT_EQ(index.MDItemCreate("/b"), nullptr);
}

TEST(MemoryMetadataIndex, TellsWhatAnItemWasGiven) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/a"}, {"kMDItemFSSize", 7}});
  const std::shared_ptr<MDItem> item = index.MDItemCreate("/a");
  EXPECT_THAT(index.MDItemCopyAttributeNames(*item), ElementsAre("kMDItemPath", "kMDItemFSSize"));
  EXPECT_EQ(*index.MDItemCopyAttributes(*item, {"x", "kMDItemFSSize"}),
            *Dictionary::make({{"kMDItemFSSize", 7}}));
  EXPECT_THAT(index.calls(), ElementsAre("MDItemCreate /a", "MDItemCopyAttributeNames",
                                         "MDItemCopyAttributes x,kMDItemFSSize"));
}

TEST(MemoryMetadataIndex, RejectsQueriesOnDemandAndSaysWhy) {
  MemoryMetadataIndex index;
  index.rejectQueries({.offset = 4, .expected = "a value", .text = {}});
  MDQueryRejection rejection;
  EXPECT_EQ(index.MDQueryCreate("a ==", {}, {}, &rejection), nullptr);
  EXPECT_EQ(rejection.offset, 4U);
  EXPECT_EQ(rejection.expected, "a value");
  EXPECT_EQ(aQuery(index), nullptr);
}

TEST(MemoryMetadataIndex, FailsExecutionsOnDemandWithoutResults) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/a"}});
  index.failExecutions();
  const std::shared_ptr<MDQuery> query = aQuery(index);
  EXPECT_FALSE(index.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_EQ(index.MDQueryGetResultCount(*query), 0);
}

TEST(MemoryMetadataIndex, FindsNothingWhileItsIdentityDoesNotActAsWanted) {
  const auto identity = std::make_shared<MemoryIdentity>();
  MemoryMetadataIndex index(identity);
  index.addHit({{"kMDItemPath", "/a"}});
  identity->refuseUser(501);
  ASSERT_EQ(identity->seteuid(501), -1);
  const std::shared_ptr<MDQuery> query = aQuery(index);
  EXPECT_TRUE(index.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_EQ(index.MDQueryGetResultCount(*query), 0);
  ASSERT_EQ(identity->seteuid(502), 0);
  EXPECT_TRUE(index.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_EQ(index.MDQueryGetResultCount(*query), 1);
}

TEST(MemoryMetadataIndex, LetsAnActionThrowOutOfAnExecution) {
  MemoryMetadataIndex index;
  index.whenExecuting([] { throw std::runtime_error("disk gone"); });
  const std::shared_ptr<MDQuery> query = aQuery(index);
  EXPECT_THROW(index.MDQueryExecute(*query, kMDQuerySynchronous), std::runtime_error);
}

TEST(MemoryMetadataIndex, WritesDownEachCallWithItsArguments) {
  MemoryMetadataIndex index;
  index.addHit({{"kMDItemPath", "/a"}});
  index.prepare();
  std::shared_ptr<MDQuery> query = aQuery(index, {"x", "y"}, {"kMDItemFSSize"});
  int calls = 0;
  index.MDQuerySetSortComparator(*query, bySizeAscending, &calls,
                                 MDQueryDeclaredOrder{"kMDItemFSSize", true});
  index.MDQuerySetSearchScope(*query, {"/a", "/b"}, 0);
  index.MDQueryExecute(*query, kMDQuerySynchronous);
  index.MDQueryDisableUpdates(*query);
  index.MDQueryGetResultCount(*query);
  const std::shared_ptr<MDItem> item = index.MDQueryGetResultAtIndex(*query, 0);
  index.MDItemCopyAttribute(*item, "kMDItemPath");
  index.MDQueryGetAttributeValueOfResultAtIndex(*query, "x", 0);
  index.MDItemCreate("/z");
  query.reset();
  EXPECT_THAT(
      index.calls(),
      ElementsAre("prepare", "MDQueryCreate a == {} x,y kMDItemFSSize",
                  "MDQuerySetSortComparator kMDItemFSSize descending",
                  "MDQuerySetSearchScope /a,/b 0", "MDQueryExecute 1", "MDQueryDisableUpdates",
                  "MDQueryGetResultCount", "MDQueryGetResultAtIndex 0",
                  "MDItemCopyAttribute kMDItemPath", "MDQueryGetAttributeValueOfResultAtIndex x 0",
                  "MDItemCreate /z", "release"));
  EXPECT_THAT(index.lastScope(), ElementsAre("/a", "/b"));
}

TEST(MemoryMetadataIndex, WritesNothingDownOnceTheRecordingIsStopped) {
  MemoryMetadataIndex index;
  index.stopRecording();
  index.MDItemCreate("/z");
  aQuery(index);
  EXPECT_TRUE(index.calls().empty());
}

TEST(MemoryMetadataIndex, ListsItsAttributesAndTheirNames) {
  MemoryMetadataIndex index;
  EXPECT_TRUE(index.MDSchemaCopyAllAttributes().empty());
  index.addAttribute("b", "Bee");
  index.addAttribute("a", std::nullopt);
  EXPECT_THAT(index.MDSchemaCopyAllAttributes(), ElementsAre("b", "a"));
  EXPECT_EQ(index.MDSchemaCopyDisplayNameForAttribute("b"), "Bee");
  EXPECT_EQ(index.MDSchemaCopyDisplayNameForAttribute("a"), std::nullopt);
  EXPECT_EQ(index.MDSchemaCopyDisplayNameForAttribute("c"), std::nullopt);
}

}  // namespace
}  // namespace vt
