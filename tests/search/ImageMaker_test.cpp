#include "search/ImageMaker.h"

#include <errno.h>
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "platform/memory/FaultyFiles.h"
#include "search/ImageWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A maker of one picture in a world of its own.
class ImageMaker : public testing::Test {
 protected:
  bool make(bool iconMode = true, double width = 128, double height = 128) {
    return ImageWorld::groupOf({})->buildThumbnailForFile(source, target, iconMode, width, height);
  }
  /// Has the tool write `bytes` where it should, and exit with `status`.
  void scriptTool(const std::string& bytes, int status = 0) {
    world.images->setAskedInProcess(false);
    world.tasks->setScript(tool, [this, bytes, status](const Task& task) {
      if (!bytes.empty()) writeFile(task.arguments.back() + "/report.pdf.png", bytes);
      return TaskResult{TaskEnd::kExited, status, "", ""};
    });
  }

  ImageWorld world;
  std::string source = world.addFile("report.pdf");
  std::string target = world.cache + "/made.png";
  std::string tool = world.folder / "usr/bin/qlmanage";
  std::string thumbnail = *encodePng(MemoryImages::thumbnailOf({128, 128, true}));
  std::string icon = *encodePng(MemoryImages::iconOf(128));
};

TEST_F(ImageMaker, WritesTheThumbnailAsPng) {
  EXPECT_TRUE(make());
  EXPECT_EQ(readFile(target), thumbnail);
  EXPECT_THAT(world.images->attempts(),
              ElementsAre("open " + source, "thumbnail " + source + " 128x128 icon mode", "png"));
  EXPECT_THAT(world.tasks->runs(), IsEmpty());
}

TEST_F(ImageMaker, AsksForTheSizeAndModeThatItIsGiven) {
  EXPECT_TRUE(make(/*iconMode=*/false, 300, 200));
  EXPECT_THAT(world.images->attempts(),
              ElementsAre("open " + source, "thumbnail " + source + " 300x200", "png"));
}

TEST_F(ImageMaker, TakesTheIconOfTheWidthWhenThereIsNoThumbnail) {
  source = world.folder / "other";
  world.images->addIcon(source);
  EXPECT_TRUE(make(/*iconMode=*/true, 128.9, 65));
  EXPECT_EQ(readFile(target), icon);
  EXPECT_THAT(world.images->attempts(),
              ElementsAre("open " + source, "thumbnail " + source + " 128.9x65 icon mode",
                          "icon " + source + " 128", "png"));
}

TEST_F(ImageMaker, GivesUpWhenThereIsNeitherThumbnailNorIcon) {
  source = world.folder / "other";
  writeFile(target, "old");
  EXPECT_FALSE(make());
  EXPECT_EQ(readFile(target), "old");
}

TEST_F(ImageMaker, TakesTheIconOfWhatHasNoContent) {
  world.images->refuse(source, Images::Refusal::kNoContent);
  EXPECT_TRUE(make());
  EXPECT_THAT(world.images->attempts(),
              ElementsAre("open " + source, "icon " + source + " 128", "png"));
}

TEST_F(ImageMaker, MakesNothingOfWhatMayNotBeRead) {
  world.images->refuse(source, Images::Refusal::kForbidden);
  for (const bool inProcess : {true, false}) {
    scriptTool(thumbnail);
    world.images->setAskedInProcess(inProcess);
    EXPECT_FALSE(make());
    EXPECT_FALSE(std::filesystem::exists(target));
  }
  EXPECT_THAT(world.images->attempts(), ElementsAre("open " + source, "open " + source));
  EXPECT_THAT(world.tasks->runs(), IsEmpty());
}

TEST_F(ImageMaker, ReadsWithTheRightsOfTheUserAndWritesWithItsOwn) {
  world.identity->setGroups("ann", {80});
  EXPECT_TRUE(ImageWorld::groupOf({}, world.ann())
                  ->buildThumbnailForFile(source, target, /*iconMode=*/true, 128, 128));
  EXPECT_THAT(world.identity->calls(), ElementsAre("setgroups 20,80", "setegid 20", "seteuid 501",
                                                   "seteuid 0", "setegid 0", "setgroups "));
}

TEST_F(ImageMaker, OpensNothingWhenTheUserCannotBeTakenOn) {
  world.identity->refuseUser(501);
  EXPECT_FALSE(ImageWorld::groupOf({}, world.ann())
                   ->buildThumbnailForFile(source, target, /*iconMode=*/true, 128, 128));
  EXPECT_THAT(world.images->attempts(), IsEmpty());
}

TEST_F(ImageMaker, WritesAnEmptyFileWhenThePngCannotBeMade) {
  world.images->refusePng();
  EXPECT_TRUE(make());
  EXPECT_TRUE(std::filesystem::exists(target));
  EXPECT_EQ(readFile(target), "");
}

TEST_F(ImageMaker, SaysNoWhenTheFolderIsMissing) {
  target = world.folder / "missing/made.png";
  EXPECT_FALSE(make());
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(ImageMaker, RunsTheToolWithTheseArguments) {
  struct Case {
    const char* what;
    bool iconMode;
    double width;
    double height;
    std::vector<std::string> before;
    const char* size;
  };
  const Case cases[] = {
      {"icon mode", true, 128, 128, {"-t", "-i"}, "128.000000"},
      {"without icon mode", false, 1024, 1024, {"-t"}, "1024.000000"},
      {"wider than high", true, 128, 65, {"-t", "-i"}, "128.000000"},
      {"higher than wide", true, 65, 128, {"-t", "-i"}, "128.000000"},
      {"broken size", false, 65.5, 12, {"-t"}, "65.500000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scriptTool(thumbnail);
    EXPECT_TRUE(make(c.iconMode, c.width, c.height));
    std::vector<std::string> expected = c.before;
    expected.insert(expected.end(), {source, "-s", c.size, "-o", world.cache});
    ASSERT_FALSE(world.tasks->runs().empty());
    EXPECT_EQ(world.tasks->runs().back().arguments, expected);
  }
}

TEST_F(ImageMaker, MovesWhatTheToolMadeToTheTarget) {
  scriptTool("made by the tool");
  writeFile(target, "old");
  EXPECT_TRUE(make());
  EXPECT_EQ(readFile(target), "made by the tool");
  EXPECT_FALSE(std::filesystem::exists(world.cache + "/report.pdf.png"));
  EXPECT_THAT(world.images->attempts(), ElementsAre("open " + source));
}

TEST_F(ImageMaker, TakesTheIconOfTheLargerSizeWhenTheToolFails) {
  struct Case {
    const char* what;
    const char* bytes;
    int status;
  };
  const Case cases[] = {
      {"it says so", "something", 1},
      {"it made no file", "", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    scriptTool(c.bytes, c.status);
    EXPECT_TRUE(make(/*iconMode=*/true, 65, 128));
    EXPECT_EQ(readFile(target), icon);
    EXPECT_EQ(world.images->attempts()[world.images->attempts().size() - 2],
              "icon " + source + " 128");
    std::filesystem::remove(world.cache + "/report.pdf.png");
  }
}

TEST_F(ImageMaker, TakesTheIconWhenThereIsNoTool) {
  world.images->setAskedInProcess(false);
  EXPECT_TRUE(make());
  EXPECT_EQ(readFile(target), icon);
}

TEST_F(ImageMaker, GivesUpWhenTheToolFailsAndThereIsNoIcon) {
  source = world.folder / "other";
  scriptTool("", 1);
  EXPECT_FALSE(make());
  EXPECT_FALSE(std::filesystem::exists(target));
}

TEST_F(ImageMaker, MakesNothingOfAnImpossibleSize) {
  source = world.folder / "other";
  for (const double size : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_FALSE(make(/*iconMode=*/true, size, size));
  }
  EXPECT_EQ(world.images->attempts().back(), "icon " + source + " 1073741824");
}

TEST_F(ImageMaker, TellsWhoMayReadASource) {
  EXPECT_TRUE(mayReadSource(source, nullptr));
  world.images->refuse(source, Images::Refusal::kForbidden);
  EXPECT_FALSE(mayReadSource(source, nullptr));
  world.images->refuse(source, Images::Refusal::kNoContent);
  EXPECT_TRUE(mayReadSource(source, nullptr)) << "there it is, without content";
  world.images->refuse("/missing", Images::Refusal::kNoContent);
  EXPECT_FALSE(mayReadSource("/missing", nullptr));
  world.identity->refuseUser(501);
  EXPECT_FALSE(mayReadSource(source, world.ann().get()));
}

TEST_F(ImageMaker, LeavesNoHalfFileOnAFullDisk) {
  const auto files = std::make_shared<FaultyFiles>();
  const PlatformScope full(std::make_shared<Platform>(Platform::Services{
      .files = files,
      .identity = world.identity,
      .directoryServices = nullptr,
      .runtimeBundles = nullptr,
      .metadataIndex = nullptr,
      .resources = nullptr,
      .host = nullptr,
      .process = world.process,
      .images = world.images,
      .rootPrefix = world.folder.path().string(),
  }));
  files->failAfter(1, ENOSPC);  // after the temporary file was made
  EXPECT_FALSE(make());
  EXPECT_TRUE(files->didFail());
  EXPECT_FALSE(std::filesystem::exists(target));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(world.cache), {}), 1)
      << "the folder of thumbnails, and nothing else";
}

}  // namespace
}  // namespace vt
