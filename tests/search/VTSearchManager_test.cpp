#include "search/VTSearchManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "search/SearchWorld.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"
#include "settings/VTSettings.h"
#include "support/LogCapture.h"

namespace vt {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using Folders = ObjectArray<VTSearchFolder>;

std::shared_ptr<Folders> theFolder(const std::string& path = "/data") {
  return Folders::make({VTConcreteSearchFolder::initWithPath(path, "Data")});
}

/// The groups of a search without a user, as "Images: /a /b".
std::vector<std::string> groupsOf(const VTSearchResultContainer& container) {
  std::vector<std::string> lines;
  for (const std::shared_ptr<VTSearchResult>& group : *container.results()) {
    std::string line = *group->title() + ":";
    for (std::uint64_t i = 0; i < group->count(); ++i) line += " " + *group->pathForItemAtIndex(i);
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> search(const std::shared_ptr<VTUser>& user = nullptr) {
  const LogCapture log;
  return groupsOf(*VTSearchManager::initWithUser(user)->executeQuery("q", theFolder()));
}

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

TEST(VTSearchManager, GroupsHitsByKindInSortOrderEachNewestFirst) {
  SearchWorld world;
  world.addHit("/text/old", 1);
  world.addHit("/image/old", 2, "public.image");
  world.addHit("/strange", 3, "com.example.unknown");
  world.addHit("/text/new", 4);
  world.addHit("/image/new", 5, "public.image");
  EXPECT_THAT(search(), ElementsAre("Images: /image/new /image/old",
                                    "Documents: /text/new /text/old", "Other: /strange"));
}

TEST(VTSearchManager, PutsHitsWithoutADateLastInTheIndexsOrder) {
  SearchWorld world;
  world.index->addHit({{"kMDItemPath", "/none"}});
  world.index->addHit({{"kMDItemPath", "/none too"}});
  world.addHit("/dated", 1, "com.example.unknown");
  EXPECT_THAT(search(), ElementsAre("Other: /dated /none /none too"));
}

TEST(VTSearchManager, KeepsGroupsOfOneSortOrderByFirstAppearance) {
  SearchWorld world;
  world.addHit("/film", 9, "public.movie");
  world.addHit("/text", 8);
  EXPECT_THAT(search(), ElementsAre("Movies: /film", "Documents: /text"));
}

TEST(VTSearchManager, PutsHitsOfDifferentTreesButOneKindIntoOneGroup) {
  SearchWorld world;
  world.index->addHit(SearchWorld::hit("/a", 3, Array::make({"public.html", "public.text"})));
  world.index->addHit(SearchWorld::hit("/b", 2, Array::make({"public.text"})));
  world.index->addHit(SearchWorld::hit("/c", 1, Array::make({"public.xml", "public.text"})));
  EXPECT_THAT(search(), ElementsAre("Documents: /a /b /c"));
}

TEST(VTSearchManager, TakesATreeThatIsNoListForTheFallbackKind) {
  SearchWorld world;
  world.index->addHit({{"kMDItemPath", "/a"}, {"kMDItemContentTypeTree", "public.text"}});
  world.index->addHit({{"kMDItemPath", "/b"}, {"kMDItemContentTypeTree", Array::make()}});
  EXPECT_THAT(search(), ElementsAre("Other: /a /b"));
}

TEST(VTSearchManager, SkipsHitsOfNoKind) {
  SearchWorld world(SearchWorld::kKindsWithoutFallback);
  world.addHit("/text", 2);
  world.addHit("/image", 1, "public.image");
  EXPECT_THAT(search(), ElementsAre("Images: /image"));
}

TEST(VTSearchManager, SkipsHitsWithoutAPath) {
  SearchWorld world;
  world.index->addHit({{"kMDItemDisplayName", "lost"}});
  world.addHit("", 3);
  world.index->addHit({{"kMDItemPath", 7}});
  world.addHit("/there", 1);
  EXPECT_THAT(search(), ElementsAre("Documents: /there"));
}

TEST(VTSearchManager, MakesRecordsOfSixEntriesInOrder) {
  SearchWorld world;
  const std::shared_ptr<Array> tree = Array::make({"public.text"});
  world.index->addHit(SearchWorld::hit("/a/name.txt", 100, tree));
  const LogCapture log;
  const auto container = VTSearchManager::initWithUser(nullptr)->executeQuery("q", theFolder());
  const Dictionary& record = *container->results()->at(0)->results()->at(0);
  std::vector<std::string> keys;
  for (const auto& [key, value] : record) keys.push_back(key.str());
  EXPECT_THAT(keys,
              ElementsAre("kMDItemPath", "kMDItemDisplayName", "kMDItemContentModificationDate",
                          "kMDItemContentTypeTree", "kMDItemFSSize", "kMDItemLastUsedDate"));
  EXPECT_EQ(record, *SearchWorld::hit("/a/name.txt", 100, tree));
  EXPECT_EQ(record.find("kMDItemContentTypeTree")->array(), tree) << "not the index's own array";
}

TEST(VTSearchManager, EndsARecordAtTheFirstAbsentValue) {
  struct Case {
    const char* missing;
    std::size_t entries;
  };
  const Case cases[] = {
      {"kMDItemDisplayName", 1},     {"kMDItemContentModificationDate", 2},
      {"kMDItemContentTypeTree", 3}, {"kMDItemFSSize", 4},
      {"kMDItemLastUsedDate", 5},    {"nothing", 6},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.missing);
    SearchWorld world;
    const auto hit = SearchWorld::hit("/a", 1, Array::make({"public.text"}));
    hit->remove(c.missing);
    world.index->addHit(hit);
    const LogCapture log;
    const auto container = VTSearchManager::initWithUser(nullptr)->executeQuery("q", theFolder());
    const Dictionary& record = *container->results()->at(0)->results()->at(0);
    EXPECT_EQ(record.size(), c.entries);
    EXPECT_FALSE(record.contains(c.missing));
  }
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

TEST(VTSearchManager, RestoresTheIdentityAfterARejectedQuery) {
  SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(world.ann());
  world.index->rejectQueries({});
  const LogCapture log;
  manager->executeQuery("a ==", theFolder());
  EXPECT_THAT(world.identity->calls(),
              ElementsAre("seteuid 501", "setegid 20", "seteuid 0", "setegid 20"));
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

TEST(VTSearchManager, ActsAsTheUserWhileTheIndexWorks) {
  SearchWorld world;
  std::vector<std::uint32_t> ids;
  world.index->whenExecuting([&] { ids = {world.identity->geteuid(), world.identity->getegid()}; });
  search(world.ann());
  EXPECT_THAT(ids, ElementsAre(501U, 20U));
}

TEST(VTSearchManager, SwitchesBeforeTheQueryIsMadeAndBackOnceItIsLetGo) {
  for (const bool rejected : {false, true}) {
    SCOPED_TRACE(rejected);
    SearchWorld world;
    world.addHit("/a", 1);
    const auto manager = VTSearchManager::initWithUser(world.ann());
    if (rejected) world.index->rejectQueries({});
    std::vector<std::string> events;  // each with the call of the index that went before
    const auto note = [&](std::string_view event) {
      const std::string& last = world.index->calls().back();
      events.push_back(std::string(event) + " after " + last.substr(0, last.find(' ')));
    };
    world.identity->whenSwitching(note);
    const LogRedirection log(note);
    manager->executeQuery("q", theFolder());
    if (rejected) {
      EXPECT_THAT(events,
                  ElementsAre("seteuid 501 after prepare", "setegid 20 after prepare",
                              "Unable to create query! after MDQueryCreate",
                              "seteuid 0 after MDQueryCreate", "setegid 20 after MDQueryCreate"));
    } else {
      EXPECT_THAT(events, ElementsAre("seteuid 501 after prepare", "setegid 20 after prepare",
                                      "Found 1 elements for query q after MDQueryGetResultCount",
                                      "Finished executing query in 0.000000 seconds after "
                                      "MDQueryGetAttributeValueOfResultAtIndex",
                                      "seteuid 0 after release", "setegid 20 after release"));
    }
  }
}

TEST(VTSearchManager, SwitchesUserThenGroupAndLeavesTheProcessInTheUsersGroup) {
  SearchWorld world;
  search(world.ann());
  EXPECT_THAT(world.identity->calls(),
              ElementsAre("seteuid 501", "setegid 20", "seteuid 0", "setegid 20"));
  EXPECT_EQ(world.identity->geteuid(), 0U);
  EXPECT_EQ(world.identity->getegid(), 20U);
}

TEST(VTSearchManager, DoesNotSwitchTheGroupAgainAtTheNextSearchOfTheSameUser) {
  SearchWorld world;
  search(world.ann());
  search(world.ann());
  EXPECT_THAT(world.identity->calls(), ElementsAre("seteuid 501", "setegid 20", "seteuid 0",
                                                   "setegid 20", "seteuid 501", "seteuid 0"));
}

TEST(VTSearchManager, IgnoresARefusedSwitchOfTheGroup) {
  SearchWorld world(SearchWorld::kKinds, MemoryIdentity::Rules::kStrict);
  world.addHit("/a", 1);
  EXPECT_THAT(search(world.ann()), ElementsAre("Documents: /a"));
  EXPECT_THAT(world.identity->calls(), ElementsAre("seteuid 501", "setegid 20", "seteuid 0"));
  EXPECT_EQ(world.identity->geteuid(), 0U);
  EXPECT_EQ(world.identity->getegid(), 0U);
}

TEST(VTSearchManager, FindsNothingWhenTheSwitchOfTheUserIsRefused) {
  SearchWorld world;
  world.addHit("/a", 1);
  world.identity->refuseUser(501);
  EXPECT_THAT(search(world.ann()), IsEmpty());
  EXPECT_EQ(world.identity->geteuid(), 0U);
}

TEST(VTSearchManager, NeitherSwitchesNorFiltersForAUserWithTheIdsOfTheProcess) {
  SearchWorld world;
  world.addHit("/no such file", 1);
  EXPECT_THAT(search(world.root()), ElementsAre("Documents: /no such file"));
  EXPECT_THAT(world.identity->calls(), IsEmpty());
}

TEST(VTSearchManager, SwitchesTheGroupAloneWhenTheUserIsRoot) {
  SearchWorld world;
  world.identity->setIds(0, 5);
  search(world.root());
  EXPECT_THAT(world.identity->calls(), ElementsAre("setegid 0", "setegid 0"));
}

TEST(VTSearchManager, NeitherSwitchesNorFiltersWithoutAUser) {
  for (const std::uint32_t euid : {0U, 501U}) {
    SCOPED_TRACE(euid);
    SearchWorld world;
    world.identity->setIds(euid, euid);
    world.addHit("/no such file", 1);
    EXPECT_THAT(search(), ElementsAre("Documents: /no such file"));
    EXPECT_THAT(world.identity->calls(), IsEmpty());
  }
}

TEST(VTSearchManager, AsksTheUserForEachPathUnlessItIsRootsProcess) {
  SearchWorld world;
  world.identity->setIds(502, 20);
  const std::string open = world.folder / "open";
  const std::string closed = world.folder / "closed";
  std::ofstream(open) << "x";
  std::ofstream(closed) << "x";
  std::filesystem::permissions(closed, std::filesystem::perms::owner_read);
  world.addHit(open, 3);
  world.addHit(closed, 2);
  world.addHit("/no such file", 1);
  EXPECT_THAT(search(world.ann()), ElementsAre("Documents: " + open));
  EXPECT_THAT(world.identity->calls(), IsEmpty());
}

TEST(VTSearchManager, RestoresTheIdentityWhenTheIndexThrows) {
  SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(world.ann());
  world.index->whenExecuting([] { throw std::runtime_error("disk gone"); });
  EXPECT_THROW(manager->executeQuery("q", theFolder()), std::runtime_error);
  EXPECT_THAT(world.identity->calls(),
              ElementsAre("seteuid 501", "setegid 20", "seteuid 0", "setegid 20"));
}

TEST(VTSearchManager, TellsEveryGroupTheUser) {
  SearchWorld world;
  for (int i = 0; i < 26; ++i) world.addHit("/" + std::to_string(i), i);
  const LogCapture log;
  const auto container = VTSearchManager::initWithUser(world.ann())->executeQuery("q", theFolder());
  EXPECT_EQ(container->results()->at(0)->numberOfPages(), 2U) << "the user's 25 per page";
}

}  // namespace
}  // namespace vt
