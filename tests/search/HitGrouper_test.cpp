#include "search/HitGrouper.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "search/SearchWorld.h"
#include "search/SearchedGroups.h"

namespace vt {
namespace {

using testing::ElementsAre;

TEST(HitGrouper, GroupsHitsByKindInSortOrderEachNewestFirst) {
  SearchWorld world;
  world.addHit("/text/old", 1);
  world.addHit("/image/old", 2, "public.image");
  world.addHit("/strange", 3, "com.example.unknown");
  world.addHit("/text/new", 4);
  world.addHit("/image/new", 5, "public.image");
  EXPECT_THAT(search(), ElementsAre("Images: /image/new /image/old",
                                    "Documents: /text/new /text/old", "Other: /strange"));
}

TEST(HitGrouper, PutsHitsWithoutADateLastInTheIndexsOrder) {
  SearchWorld world;
  world.index->addHit({{"kMDItemPath", "/none"}});
  world.index->addHit({{"kMDItemPath", "/none too"}});
  world.addHit("/dated", 1, "com.example.unknown");
  EXPECT_THAT(search(), ElementsAre("Other: /dated /none /none too"));
}

TEST(HitGrouper, KeepsGroupsOfOneSortOrderByFirstAppearance) {
  SearchWorld world;
  world.addHit("/film", 9, "public.movie");
  world.addHit("/text", 8);
  EXPECT_THAT(search(), ElementsAre("Movies: /film", "Documents: /text"));
}

TEST(HitGrouper, PutsHitsOfDifferentTreesButOneKindIntoOneGroup) {
  SearchWorld world;
  world.index->addHit(SearchWorld::hit("/a", 3, Array::make({"public.html", "public.text"})));
  world.index->addHit(SearchWorld::hit("/b", 2, Array::make({"public.text"})));
  world.index->addHit(SearchWorld::hit("/c", 1, Array::make({"public.xml", "public.text"})));
  EXPECT_THAT(search(), ElementsAre("Documents: /a /b /c"));
}

TEST(HitGrouper, TakesATreeThatIsNoListForTheFallbackKind) {
  SearchWorld world;
  world.index->addHit({{"kMDItemPath", "/a"}, {"kMDItemContentTypeTree", "public.text"}});
  world.index->addHit({{"kMDItemPath", "/b"}, {"kMDItemContentTypeTree", Array::make()}});
  EXPECT_THAT(search(), ElementsAre("Other: /a /b"));
}

TEST(HitGrouper, SkipsHitsOfNoKind) {
  SearchWorld world(SearchWorld::kKindsWithoutFallback);
  world.addHit("/text", 2);
  world.addHit("/image", 1, "public.image");
  EXPECT_THAT(search(), ElementsAre("Images: /image"));
}

TEST(HitGrouper, SkipsHitsWithoutAPath) {
  SearchWorld world;
  world.index->addHit({{"kMDItemDisplayName", "lost"}});
  world.addHit("", 3);
  world.index->addHit({{"kMDItemPath", 7}});
  world.addHit("/there", 1);
  EXPECT_THAT(search(), ElementsAre("Documents: /there"));
}

TEST(HitGrouper, MakesRecordsOfSixEntriesInOrder) {
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

TEST(HitGrouper, EndsARecordAtTheFirstAbsentValue) {
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

TEST(HitGrouper, TellsEveryGroupTheUser) {
  SearchWorld world;
  for (int i = 0; i < 26; ++i) world.addHit("/" + std::to_string(i), i);
  const LogCapture log;
  const auto container = VTSearchManager::initWithUser(world.ann())->executeQuery("q", theFolder());
  EXPECT_EQ(container->results()->at(0)->numberOfPages(), 2U) << "the user's 25 per page";
}

}  // namespace
}  // namespace vt
