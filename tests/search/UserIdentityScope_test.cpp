#include "search/UserIdentityScope.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "search/SearchWorld.h"
#include "search/SearchedGroups.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(UserIdentityScope, RestoresTheIdentityAfterARejectedQuery) {
  SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(world.ann());
  world.index->rejectQueries({});
  const LogCapture log;
  manager->executeQuery("a ==", theFolder());
  EXPECT_THAT(world.identity->calls(),
              ElementsAre("seteuid 501", "setegid 20", "seteuid 0", "setegid 20"));
}

TEST(UserIdentityScope, ActsAsTheUserWhileTheIndexWorks) {
  SearchWorld world;
  std::vector<std::uint32_t> ids;
  world.index->whenExecuting([&] { ids = {world.identity->geteuid(), world.identity->getegid()}; });
  search(world.ann());
  EXPECT_THAT(ids, ElementsAre(501U, 20U));
}

TEST(UserIdentityScope, SwitchesBeforeTheQueryIsMadeAndBackOnceItIsLetGo) {
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

TEST(UserIdentityScope, SwitchesUserThenGroupAndLeavesTheProcessInTheUsersGroup) {
  SearchWorld world;
  search(world.ann());
  EXPECT_THAT(world.identity->calls(),
              ElementsAre("seteuid 501", "setegid 20", "seteuid 0", "setegid 20"));
  EXPECT_EQ(world.identity->geteuid(), 0U);
  EXPECT_EQ(world.identity->getegid(), 20U);
}

TEST(UserIdentityScope, DoesNotSwitchTheGroupAgainAtTheNextSearchOfTheSameUser) {
  SearchWorld world;
  search(world.ann());
  search(world.ann());
  EXPECT_THAT(world.identity->calls(), ElementsAre("seteuid 501", "setegid 20", "seteuid 0",
                                                   "setegid 20", "seteuid 501", "seteuid 0"));
}

TEST(UserIdentityScope, IgnoresARefusedSwitchOfTheGroup) {
  SearchWorld world(SearchWorld::kKinds, MemoryIdentity::Rules::kStrict);
  world.addHit("/a", 1);
  EXPECT_THAT(search(world.ann()), ElementsAre("Documents: /a"));
  EXPECT_THAT(world.identity->calls(), ElementsAre("seteuid 501", "setegid 20", "seteuid 0"));
  EXPECT_EQ(world.identity->geteuid(), 0U);
  EXPECT_EQ(world.identity->getegid(), 0U);
}

TEST(UserIdentityScope, FindsNothingWhenTheSwitchOfTheUserIsRefused) {
  SearchWorld world;
  world.addHit("/a", 1);
  world.identity->refuseUser(501);
  EXPECT_THAT(search(world.ann()), IsEmpty());
  EXPECT_EQ(world.identity->geteuid(), 0U);
}

TEST(UserIdentityScope, NeitherSwitchesNorFiltersForAUserWithTheIdsOfTheProcess) {
  SearchWorld world;
  world.addHit("/no such file", 1);
  EXPECT_THAT(search(world.root()), ElementsAre("Documents: /no such file"));
  EXPECT_THAT(world.identity->calls(), IsEmpty());
}

TEST(UserIdentityScope, SwitchesTheGroupAloneWhenTheUserIsRoot) {
  SearchWorld world;
  world.identity->setIds(0, 5);
  search(world.root());
  EXPECT_THAT(world.identity->calls(), ElementsAre("setegid 0", "setegid 0"));
}

TEST(UserIdentityScope, NeitherSwitchesNorFiltersWithoutAUser) {
  for (const std::uint32_t euid : {0U, 501U}) {
    SCOPED_TRACE(euid);
    SearchWorld world;
    world.identity->setIds(euid, euid);
    world.addHit("/no such file", 1);
    EXPECT_THAT(search(), ElementsAre("Documents: /no such file"));
    EXPECT_THAT(world.identity->calls(), IsEmpty());
  }
}

TEST(UserIdentityScope, AsksTheUserForEachPathUnlessItIsRootsProcess) {
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

TEST(UserIdentityScope, RestoresTheIdentityWhenTheIndexThrows) {
  SearchWorld world;
  const auto manager = VTSearchManager::initWithUser(world.ann());
  world.index->whenExecuting([] { throw std::runtime_error("disk gone"); });
  EXPECT_THROW(manager->executeQuery("q", theFolder()), std::runtime_error);
  EXPECT_THAT(world.identity->calls(),
              ElementsAre("seteuid 501", "setegid 20", "seteuid 0", "setegid 20"));
}

}  // namespace
}  // namespace vt
