#include <gmock/gmock.h>

#include <stdexcept>

#include "search/ImageWorld.h"
#include "settings/VTSettings.h"

namespace vt {
namespace {

using std::filesystem::exists;
using testing::ElementsAre;
using testing::IsEmpty;

/// The names, in the test's folder, of the files whose thumbnail was asked for, in order.
std::vector<std::string> builtIn(const ImageWorld& world) {
  const std::string prefix = "open " + world.folder.path().string() + "/";
  std::vector<std::string> names;
  for (const std::string& attempt : world.images->attempts()) {
    if (attempt.starts_with(prefix)) names.push_back(attempt.substr(prefix.size()));
  }
  return names;
}

std::vector<std::string> addFiles(const ImageWorld& world, int count) {
  std::vector<std::string> paths;
  for (int i = 0; i < count; ++i) paths.push_back(world.addFile(std::to_string(i)));
  return paths;
}

TEST(Thumbnail, IsNamedByADigestOfThePath) {
  const ImageWorld world;
  EXPECT_EQ(VTSearchResult::thumbnailFileNameForFile("/a/b.jpg"),
            "13b7cf79c88a1e69c00837221ab2ea93.png");
}

TEST(Thumbnail, IsNamedByTheBytesOfAPathThatIsNotUtf8) {
  const ImageWorld world;
  EXPECT_EQ(VTSearchResult::thumbnailFileNameForFile("/\xff").size(), 36U);
  EXPECT_NE(VTSearchResult::thumbnailFileNameForFile("/\xff"),
            VTSearchResult::thumbnailFileNameForFile("/\xfe"));
}

TEST(Thumbnail, HasASmallVersionWithASuffix) {
  const ImageWorld world;
  const std::string normal = VTSearchResult::thumbnailFileNameForFile("/a");
  EXPECT_EQ(VTSearchResult::smallThumbnailFileNameForFile("/a"),
            normal.substr(0, 32) + "_small.png");
}

TEST(Thumbnail, OfAnItemIsNamedByItsPath) {
  const ImageWorld world;
  const auto group = ImageWorld::groupOf({"/a"});
  EXPECT_EQ(group->thumbnailFileNameForItemAtIndex(0),
            VTSearchResult::thumbnailFileNameForFile("/a"));
  EXPECT_EQ(group->thumbnailFileNameForItemAtIndex(0, /*smallVersion=*/true),
            VTSearchResult::smallThumbnailFileNameForFile("/a"));
  EXPECT_EQ(group->thumbnailFileNameForItemAtIndex(1), std::nullopt);
  EXPECT_THROW(ImageWorld::groupOf({})->thumbnailFileNameForItemAtIndex(0), std::out_of_range);
}

TEST(Thumbnail, IsValidUntilItsSourceIsNewer) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  const std::string image = world.thumbnailOf(path);
  writeFile(image, "");
  const auto time = ImageWorld::now() - std::chrono::hours(1);
  struct Case {
    const char* what;
    std::chrono::microseconds sourceIsLaterBy;
    bool isValid;
  };
  const Case cases[] = {
      {"older source", std::chrono::microseconds(-1), true},
      {"of one age", std::chrono::microseconds(0), true},
      {"newer source", std::chrono::microseconds(1), false},
      {"much newer source", std::chrono::hours(1), false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ImageWorld::setModified(image, time);
    ImageWorld::setModified(path, time + c.sourceIsLaterBy);
    const auto found = VTSearchResult::validThumbnailForFile(path, world.thumbnails);
    EXPECT_EQ(found, c.isValid ? std::optional(image) : std::nullopt);
    EXPECT_EQ(ImageWorld::groupOf({path})->thumbnailPathForItemAtIndex(0), found);
    EXPECT_EQ(ImageWorld::groupOf({path})->thumbnailFileExistsForItemAtIndex(0), c.isValid);
  }
}

TEST(Thumbnail, IsNotValidWhenItIsNotThere) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  EXPECT_EQ(VTSearchResult::validThumbnailForFile(path, world.thumbnails), std::nullopt);
  writeFile(world.thumbnailOf(path, /*smallVersion=*/true), "");
  EXPECT_EQ(VTSearchResult::validThumbnailForFile(path, world.thumbnails), std::nullopt);
  EXPECT_TRUE(VTSearchResult::validThumbnailForFile(path, world.thumbnails, /*smallVersion=*/true));
  EXPECT_TRUE(
      ImageWorld::groupOf({path})->thumbnailFileExistsForItemAtIndex(0, /*smallVersion=*/true));
}

TEST(Thumbnail, OutlivesItsSource) {
  const ImageWorld world;
  const std::string path = world.folder / "gone";
  writeFile(world.thumbnailOf(path), "");
  EXPECT_EQ(VTSearchResult::validThumbnailForFile(path, world.thumbnails), world.thumbnailOf(path));
}

TEST(Thumbnail, GoesByTheDatesOfWhatLinksLeadTo) {
  const ImageWorld world;
  const std::string target = world.addFile("target", /*age=*/100);
  const std::string path = world.folder / "link";
  std::filesystem::create_symlink(target, path);
  const std::string image = world.folder / "image";
  writeFile(image, "");
  ImageWorld::setAge(image, 50);
  std::filesystem::create_symlink(image, world.thumbnailOf(path));
  EXPECT_TRUE(VTSearchResult::validThumbnailForFile(path, world.thumbnails));
  ImageWorld::setAge(target, 10);
  EXPECT_FALSE(VTSearchResult::validThumbnailForFile(path, world.thumbnails));
}

TEST(Thumbnail, IsAbsentForAnItemWithoutPath) {
  const ImageWorld world;
  const auto group = ImageWorld::groupOf({"/a"});
  EXPECT_EQ(group->thumbnailPathForItemAtIndex(1), std::nullopt);
  EXPECT_FALSE(group->thumbnailFileExistsForItemAtIndex(1));
  EXPECT_FALSE(group->buildThumbnailForItemAtIndex(1));
  EXPECT_FALSE(group->buildThumbnailForFile(std::nullopt));
  EXPECT_THROW(ImageWorld::groupOf({})->thumbnailPathForItemAtIndex(0), std::out_of_range);
  EXPECT_THAT(world.images->attempts(), IsEmpty());
}

TEST(Thumbnail, IsMadeInBothSizes) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  const auto group = ImageWorld::groupOf({path});
  EXPECT_TRUE(group->buildThumbnailsForFiles({path}));
  EXPECT_TRUE(group->buildThumbnailsForFiles({path}, /*smallVersion=*/true));
  EXPECT_THAT(world.images->attempts(),
              ElementsAre("open " + path, "thumbnail " + path + " 128x128 icon mode", "png",
                          "open " + path, "thumbnail " + path + " 65x65 icon mode", "png"));
  EXPECT_TRUE(group->thumbnailFileExistsForItemAtIndex(0));
  EXPECT_TRUE(group->thumbnailFileExistsForItemAtIndex(0, /*smallVersion=*/true));
}

TEST(Thumbnail, IsMadeOnceUntilTheSourceChanges) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  const auto group = ImageWorld::groupOf({path});
  for (int i = 0; i < 2; ++i) group->buildThumbnails();
  EXPECT_THAT(builtIn(world), ElementsAre("a"));
  ImageWorld::setAge(world.thumbnailOf(path), 200);
  group->buildThumbnails();
  EXPECT_THAT(builtIn(world), ElementsAre("a", "a"));
  EXPECT_TRUE(group->thumbnailFileExistsForItemAtIndex(0));
}

TEST(Thumbnail, IsKeptWhenItIsAsOldAsItsSource) {
  const ImageWorld world;
  const std::string path = world.addFile("a");
  writeFile(world.thumbnailOf(path), "kept");
  ImageWorld::setModified(world.thumbnailOf(path), std::filesystem::last_write_time(path));
  ImageWorld::groupOf({path})->buildThumbnails();
  EXPECT_EQ(readFile(world.thumbnailOf(path)), "kept");
}

TEST(Thumbnail, IsOfAnItemOrAFileAlone) {
  const ImageWorld world;
  const std::vector<std::string> paths = addFiles(world, 3);
  EXPECT_TRUE(ImageWorld::groupOf(paths)->buildThumbnailForItemAtIndex(1));
  EXPECT_TRUE(ImageWorld::groupOf(paths)->buildThumbnailForFile(paths[2]));
  EXPECT_THAT(builtIn(world), ElementsAre("1", "2"));
}

TEST(Thumbnail, IsOnlyReadableByItsOwner) {
  const ImageWorld world;
  std::filesystem::remove_all(world.folder.path() / "Library/Caches");
  const std::string path = world.addFile("a");
  ImageWorld::groupOf({path})->buildThumbnails();
  using std::filesystem::perms;
  const auto permissions = [](const std::string& at) {
    return std::filesystem::status(at).permissions();
  };
  EXPECT_EQ(permissions(world.cache), perms::owner_all);
  EXPECT_EQ(permissions(world.thumbnails), perms::owner_all);
  EXPECT_EQ(permissions(world.thumbnailOf(path)), perms::owner_read | perms::owner_write);
}

TEST(ThumbnailRange, HoldsTheItemsFromFirstToLast) {
  constexpr std::uint64_t kAll = VTSearchResult::kWholeGroup;
  struct Case {
    const char* what;
    std::uint64_t first;
    std::uint64_t last;
    std::vector<std::string> built;
  };
  const Case cases[] = {
      {"one", 1, 1, {"1"}},
      {"some", 1, 2, {"1", "2"}},
      {"to the end", 2, 3, {"2", "3"}},
      {"just past the end", 2, 4, {"2", "3"}},
      {"far past the end", 3, UINT64_MAX, {"3"}},
      {"to the sentinel", 2, kAll, {"2", "3"}},
      {"from the sentinel", kAll, 1, {"0", "1"}},
      {"from sentinel to sentinel", kAll, kAll, {"0", "1", "2", "3"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const ImageWorld world;
    ImageWorld::groupOf(addFiles(world, 4))->buildThumbnailsFromIndex(c.first, c.last);
    EXPECT_EQ(builtIn(world), c.built);
  }
}

TEST(ThumbnailRange, CanBeOfTheSmallVersion) {
  const ImageWorld world;
  const auto paths = addFiles(world, 2);
  ImageWorld::groupOf(paths)->buildThumbnailsFromIndex(1, 1, /*smallVersion=*/true);
  EXPECT_TRUE(exists(world.thumbnailOf(paths[1], /*smallVersion=*/true)));
  EXPECT_FALSE(exists(world.thumbnailOf(paths[1])));
}

TEST(ThumbnailRange, OfAnEmptyGroupIsEmpty) {
  const ImageWorld world;
  const auto group = ImageWorld::groupOf({});
  group->buildThumbnails();
  group->buildThumbnailsFromIndex(0, 7);
  VTSearchResult::initWithGroupKind(nullptr, nullptr, nullptr, {}, nullptr)->buildThumbnails();
  EXPECT_THAT(world.images->attempts(), IsEmpty());
}

TEST(ThumbnailRange, RaisesOutOfRangeWhenItEndsBeforeItBegins) {
  const ImageWorld world;
  const auto group = ImageWorld::groupOf(addFiles(world, 3));
  EXPECT_THROW(group->buildThumbnailsFromIndex(2, 1), std::out_of_range);
  EXPECT_THROW(group->buildThumbnailsFromIndex(3, 9), std::out_of_range);
  EXPECT_THROW(ImageWorld::groupOf({})->buildThumbnailsFromIndex(1, 0), std::out_of_range);
}

TEST(ThumbnailRange, PassesOverItemsWithoutPath) {
  const ImageWorld world;
  const auto group = ImageWorld::groupOf(addFiles(world, 1));
  group->results()->append(Dictionary::make());
  group->results()->append(Dictionary::make({{"kMDItemPath", world.addFile("last")}}));
  group->buildThumbnails();
  EXPECT_THAT(builtIn(world), ElementsAre("0", "last"));
}

TEST(ThumbnailBatch, GoesOnAfterOneThatCannotBeMade) {
  const ImageWorld world;
  const std::string good = world.addFile("good");
  const std::string bad = world.folder / "bad";
  EXPECT_TRUE(ImageWorld::groupOf({})->buildThumbnailsForFiles({bad, good}));
  EXPECT_FALSE(exists(world.thumbnailOf(bad)));
  EXPECT_TRUE(exists(world.thumbnailOf(good)));
}

TEST(ThumbnailBatch, SucceedsEvenWithNothingToDo) {
  const ImageWorld world;
  EXPECT_TRUE(ImageWorld::groupOf({})->buildThumbnailsForFiles({}));
}

}  // namespace
}  // namespace vt
