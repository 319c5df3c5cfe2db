#include <gmock/gmock.h>

#include <stdexcept>

#include "search/ImageWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;

TEST(Preview, IsALargePictureNamedForTheUser) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  const auto group = ImageWorld::groupOf({path}, world.ann());
  EXPECT_EQ(group->buildPreviewForItemAtIndex(0), world.cache + "/Preview-ann.png");
  EXPECT_EQ(readFile(world.cache + "/Preview-ann.png"),
            *encodePng(MemoryImages::thumbnailOf({1024, 1024, false})));
  EXPECT_THAT(world.images->attempts(),
              ElementsAre("open " + path, "thumbnail " + path + " 1024x1024", "png"));
}

TEST(Preview, IsMadeAnewEachTime) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  const auto group = ImageWorld::groupOf({path}, world.ann());
  for (int i = 0; i < 2; ++i) group->buildPreviewForItemAtIndex(0);
  EXPECT_EQ(world.images->attempts().size(), 6U);
}

TEST(Preview, ReplacesThatOfTheSameUserAlone) {
  const ImageWorld world;
  const std::string withThumbnail = world.addFile("a");
  const std::string withIcon = world.folder / "b";
  world.images->addIcon(withIcon);
  const std::vector<std::string> paths{withThumbnail, withIcon};
  ASSERT_TRUE(ImageWorld::groupOf(paths, world.root())->buildPreviewForItemAtIndex(0));
  ASSERT_TRUE(ImageWorld::groupOf(paths, world.ann())->buildPreviewForItemAtIndex(0));
  ASSERT_TRUE(ImageWorld::groupOf(paths, world.ann())->buildPreviewForItemAtIndex(1));
  EXPECT_EQ(readFile(world.cache + "/Preview-ann.png"), *encodePng(MemoryImages::iconOf(1024)));
  EXPECT_EQ(readFile(world.cache + "/Preview-root.png"),
            *encodePng(MemoryImages::thumbnailOf({1024, 1024, false})));
}

TEST(Preview, IsNilAndLeavesNoOldOneWhenNoPictureCanBeMade) {
  const ImageWorld world;
  const std::string good = world.addFile("a");
  const auto group = ImageWorld::groupOf({good, world.folder / "nothing"}, world.ann());
  for (const std::uint64_t index : {1, 2}) {
    SCOPED_TRACE(index == 1 ? "no picture" : "past the end");
    ASSERT_TRUE(group->buildPreviewForItemAtIndex(0));
    EXPECT_EQ(group->buildPreviewForItemAtIndex(index), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(world.cache + "/Preview-ann.png"));
  }
}

TEST(Preview, IsNilForWhatTheUserMayNotRead) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  const auto group = ImageWorld::groupOf({path}, world.ann());
  ASSERT_TRUE(group->buildPreviewForItemAtIndex(0));
  world.images->refuse(path, Images::Refusal::kForbidden);
  EXPECT_EQ(group->buildPreviewForItemAtIndex(0), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(world.cache + "/Preview-ann.png"));
}

TEST(Preview, IsNilWithoutAUser) {
  const ImageWorld world;
  EXPECT_EQ(ImageWorld::groupOf({world.addFile("a")})->buildPreviewForItemAtIndex(0), std::nullopt);
}

TEST(Preview, MakesTheCacheFolderWhenItIsMissing) {
  const ImageWorld world;
  std::filesystem::remove_all(world.folder.path() / "Library/Caches");
  const auto group = ImageWorld::groupOf({world.addFile("a")}, world.ann());
  EXPECT_EQ(group->buildPreviewForItemAtIndex(0), world.cache + "/Preview-ann.png");
}

TEST(Preview, RaisesOutOfRangeForAGroupWithoutRecords) {
  const ImageWorld world;
  EXPECT_THROW(ImageWorld::groupOf({}, world.ann())->buildPreviewForItemAtIndex(0),
               std::out_of_range);
}

}  // namespace
}  // namespace vt
