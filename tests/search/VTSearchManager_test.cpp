#include "search/VTSearchManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "search/SearchWorld.h"
#include "search/SearchedGroups.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Folders = ObjectArray<VTSearchFolder>;

TEST(VTSearchManager, NamesItsAttributes) {
  const SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(nullptr);
  EXPECT_THAT(
      manager->queryRequestAttributeKeys(),
      ElementsAre("kMDItemDisplayName", "kMDItemContentTypeTree", "kMDItemContentModificationDate",
                  "kMDItemLastUsedDate", "kMDItemFSSize"));
  EXPECT_THAT(manager->querySortAttributeKeys(), ElementsAre("kMDItemContentModificationDate"));
  EXPECT_EQ(manager->groupAttributeName(), "kMDItemContentTypeTree");
}

TEST(VTSearchManager, FindsNothingAsAnEmptyContainerAndSaysSo) {
  const SearchWorld world;
  const LogCapture log;
  const auto container =
      VTSearchManager::initWithUser(nullptr)->executeQuery("a == 1", theFolder());
  ASSERT_TRUE(container);
  EXPECT_NE(container->results(), nullptr);
  EXPECT_EQ(container->count(), 0U);
  EXPECT_THAT(log.lines(), ElementsAre("Found 0 elements for query a == 1",
                                       "Finished executing query in 0.000000 seconds"));
}

TEST(VTSearchManager, LogsHowLongTheQueryTook) {
  SearchWorld world;
  world.addHit("/a", 1);
  world.index->whenExecuting(
      [&] { world.process->setNow(world.process->now() + std::chrono::milliseconds{1500}); });
  const LogCapture log;
  VTSearchManager::initWithUser(nullptr)->executeQuery("100%@ {}", theFolder());
  EXPECT_THAT(log.lines(), ElementsAre("Found 1 elements for query 100%@ {}",
                                       "Finished executing query in 1.500000 seconds"));
}

TEST(VTSearchManager, AsksTheIndexStepByStep) {
  SearchWorld world;
  world.addHit("/a", 1);
  search();
  EXPECT_THAT(
      world.index->calls(),
      ElementsAre("prepare",
                  "MDQueryCreate q kMDItemDisplayName,kMDItemContentTypeTree,"
                  "kMDItemContentModificationDate,kMDItemLastUsedDate,kMDItemFSSize "
                  "kMDItemContentModificationDate",
                  "MDQuerySetSortComparator kMDItemContentModificationDate descending",
                  "MDQuerySetSearchScope /data 0", "MDQueryExecute 1", "MDQueryDisableUpdates",
                  "MDQueryGetResultCount", "MDQueryGetResultAtIndex 0",
                  "MDItemCopyAttribute kMDItemPath",
                  "MDQueryGetAttributeValueOfResultAtIndex kMDItemContentTypeTree 0",
                  "MDQueryGetAttributeValueOfResultAtIndex kMDItemDisplayName 0",
                  "MDQueryGetAttributeValueOfResultAtIndex kMDItemContentModificationDate 0",
                  "MDQueryGetAttributeValueOfResultAtIndex kMDItemFSSize 0",
                  "MDQueryGetAttributeValueOfResultAtIndex kMDItemLastUsedDate 0", "release"));
}

TEST(VTSearchManager, SearchesThePathsOfAllFoldersInOrderRepeatedOnesTwice) {
  SearchWorld world;
  const auto group = VTSearchFolderGroup::initWithTitle("Group");
  group->addFolder(VTConcreteSearchFolder::initWithPath("/b", "B"));
  group->addFolder(VTConcreteSearchFolder::initWithPath("/a", "A again"));
  const auto folders = Folders::make({
      VTConcreteSearchFolder::initWithPath("/c", "C"),
      group,
      VTConcreteSearchFolder::initWithPath("/a", "A"),
      VTSearchFolder::initWithTitle("covers nothing"),
      VTConcreteSearchFolder::initWithTitle("has no path"),
  });
  const LogCapture log;
  VTSearchManager::initWithUser(nullptr)->executeQuery("q", folders);
  EXPECT_THAT(world.index->lastScope(), ElementsAre("/c", "/b", "/a", "/a"));
}

TEST(VTSearchManager, PassesAnEmptyScopeOn) {
  for (const std::shared_ptr<Folders>& folders :
       {Folders::make(), std::shared_ptr<Folders>(nullptr)}) {
    const SearchWorld world;
    const LogCapture log;
    VTSearchManager::initWithUser(nullptr)->executeQuery("q", folders);
    EXPECT_THAT(world.index->calls(), Contains("MDQuerySetSearchScope  0"));
  }
}

TEST(VTSearchManager, IsNilForARejectedQueryAndTellsWhy) {
  SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(world.ann());
  world.index->rejectQueries({.offset = 4, .expected = "a value", .text = {}});
  const LogCapture log;
  EXPECT_EQ(manager->executeQuery("a ==", theFolder()), nullptr);
  EXPECT_THAT(log.lines(), ElementsAre("Unable to create query!"));
  ASSERT_TRUE(manager->lastRejection());
  EXPECT_EQ(manager->lastRejection()->offset, 4U);
  EXPECT_EQ(manager->lastRejection()->expected, "a value");
  EXPECT_EQ(VTSettings::sharedInstance()->searchCount(), 0U);
}

TEST(VTSearchManager, ForgetsARejectionAtTheNextQuery) {
  SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(nullptr);
  EXPECT_FALSE(manager->lastRejection());
  world.index->rejectQueries({});
  const LogCapture log;
  manager->executeQuery("a ==", theFolder());
  EXPECT_TRUE(manager->lastRejection());
  world.index->acceptQueries();
  manager->executeQuery("a == 1", theFolder());
  EXPECT_FALSE(manager->lastRejection());
}

TEST(VTSearchManager, GivesAContainerWithoutGroupsForAQueryThatFails) {
  SearchWorld world;
  world.addHit("/a", 1);
  world.index->failExecutions();
  const auto manager = VTSearchManager::initWithUser(world.ann());
  const LogCapture log;
  const auto container = manager->executeQuery("q", theFolder());
  ASSERT_TRUE(container);
  EXPECT_EQ(container->results(), nullptr);
  EXPECT_EQ(container->count(), 0U);
  EXPECT_THAT(log.lines(), ElementsAre("Query failed for some reason!",
                                       "Finished executing query in 0.000000 seconds"));
  EXPECT_EQ(VTSettings::sharedInstance()->searchCount(), 0U);
  EXPECT_FALSE(manager->lastRejection());
  EXPECT_EQ(world.identity->geteuid(), 0U);
  EXPECT_THAT(world.index->calls(), Not(Contains("MDQueryDisableUpdates")));
}

TEST(VTSearchManager, CountsEachExecutedQueryOnce) {
  SearchWorld world;
  world.addHit("/a", 1);
  world.addHit("/b", 1);
  search();
  search();
  EXPECT_EQ(VTSettings::sharedInstance()->searchCount(), 2U);
}

TEST(VTSearchManager, LoadsEverythingBeforeAnythingIsSwitched) {
  SearchWorld world;
  const std::shared_ptr<VTUser> ann = world.ann();
  const auto manager = VTSearchManager::initWithUser(ann);
  EXPECT_THAT(world.index->calls(), ElementsAre("prepare"));
  EXPECT_EQ(world.process->loadApplicationCalls(), 1);
  EXPECT_THAT(world.identity->calls(), IsEmpty());
  const LogCapture log;
  manager->executeQuery("q", theFolder());
  EXPECT_EQ(world.process->loadApplicationCalls(), 1);
}

TEST(VTSearchManager, VisitsTheNewestTenThousandHitsAlone) {
  SearchWorld world;
  const std::shared_ptr<Array> tree = Array::make({"public.text"});
  for (int i = 0; i < 10050; ++i) {
    world.index->addHit(SearchWorld::hit("/" + std::to_string(i), i, tree));
  }
  const LogCapture log;
  const auto container = VTSearchManager::initWithUser(nullptr)->executeQuery("q", theFolder());
  const VTSearchResult& group = *container->results()->at(0);
  EXPECT_EQ(group.count(), 10000U);
  EXPECT_EQ(group.pathForItemAtIndex(0), "/10049");
  EXPECT_EQ(group.pathForItemAtIndex(9999), "/50");
  EXPECT_THAT(log.lines(), Contains("Found 10050 elements for query q"));
}

TEST(VTSearchManager, SaysWhetherThereWereMoreHitsThanItLooksAt) {
  SearchWorld world;
  const std::shared_ptr<Array> tree = Array::make({"public.text"});
  for (int i = 0; i < 10000; ++i) world.index->addHit(SearchWorld::hit("/x", i, tree));
  const LogCapture log;
  const auto manager = VTSearchManager::initWithUser(nullptr);
  manager->executeQuery("q", theFolder());
  EXPECT_FALSE(manager->lastSearchWasCut());
  world.index->addHit(SearchWorld::hit("/x", 0, tree));
  manager->executeQuery("q", theFolder());
  EXPECT_TRUE(manager->lastSearchWasCut());
}

TEST(VTSearchManager, PassesOnWhatTheIndexHasToSayOfTheLastQuery) {
  SearchWorld world;
  const LogCapture log;
  const auto manager = VTSearchManager::initWithUser(nullptr);
  world.index->setNotes({.unknownAttributes = {"a"}, .unusableScopes = {"/gone"}});
  manager->executeQuery("q", theFolder());
  EXPECT_THAT(manager->lastNotes().unknownAttributes, ElementsAre("a"));
  EXPECT_THAT(manager->lastNotes().unusableScopes, ElementsAre("/gone"));
  world.index->rejectQueries({});
  manager->executeQuery("q", theFolder());
  EXPECT_THAT(manager->lastNotes().unusableScopes, IsEmpty());
}

TEST(VTSearchManager, CountsRefusedHitsAsVisited) {
  SearchWorld world;
  world.identity->setIds(501, 20);
  const std::string readable = world.folder / "readable";
  std::ofstream(readable) << "x";
  const std::shared_ptr<Array> tree = Array::make({"public.text"});
  for (int i = 0; i < 9999; ++i) world.index->addHit(SearchWorld::hit("/refused", 10, tree));
  world.index->addHit(SearchWorld::hit(readable, 5, tree));
  world.index->addHit(SearchWorld::hit(readable, 4, tree));
  EXPECT_THAT(search(world.ann()), ElementsAre("Documents: " + readable));
}

}  // namespace
}  // namespace vt
