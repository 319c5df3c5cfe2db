#include "platform/linux/images/LinuxImages.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>

#include "images/FormatSamples.h"
#include "images/Samples.h"
#include "images/TestImages.h"
#include "platform/linux/FileDescriptor.h"
#include "support/Descendants.h"
#include "support/Places.h"
#include "support/Program.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using Refusal = Images::Refusal;

class LinuxImagesTest : public testing::Test {
 protected:
  std::string at(std::string_view name) const { return folder_ / name; }
  /// The thumbnail of the file called `name`; nothing when it cannot be opened either.
  std::optional<Image> thumbnailOf(std::string_view name, double width = 64, double height = 64) {
    const auto source = images_.open(at(name));
    if (!source) return std::nullopt;
    return images_.thumbnail(**source, {width, height, /*iconMode=*/true});
  }
  /// Its size and the colours of its quarters; "none" without one.
  std::string told(const std::optional<Image>& image) {
    if (!image) return "none";
    return fmt::format("{}x{} {}", image->width, image->height, coloursOf(*image));
  }

  /// Whether there are letters within white margins.
  static void expectPageOfWords(const std::optional<Image>& page) {
    ASSERT_TRUE(page);
    EXPECT_EQ(fmt::format("{}x{}", page->width, page->height), "192x256");
    EXPECT_EQ(colourAt(*page, 0.5, 0.02), "white") << "the margin";
    std::size_t dark = 0;
    for (std::size_t i = 0; i < page->pixels.size(); i += Image::kBytesPerPixel) {
      dark += static_cast<std::uint8_t>(page->pixels[i]) < 128 ? 1 : 0;
    }
    EXPECT_GT(dark, page->pixels.size() / Image::kBytesPerPixel / 100) << "letters";
  }

  TemporaryFolder folder_;
  LinuxImages images_{testImages()};
};

TEST_F(LinuxImagesTest, MakesThumbnailsOfEachFormat) {
  for (const SampleFormat& format : sampleFormats()) {
    const std::string name = fmt::format("a.{}", format.ending);
    SCOPED_TRACE(name);
    writeSample(at(name));
    switch (format.shows) {
      case SampleShows::kQuarters:
        EXPECT_EQ(told(thumbnailOf(name)), "64x32 red green blue white");
        break;
      case SampleShows::kLeftHalf:
        EXPECT_EQ(told(thumbnailOf(name)), "64x32 red white red white");
        break;
      case SampleShows::kWords:
        expectPageOfWords(thumbnailOf(name, 256, 256));
        break;
    }
  }
}

TEST_F(LinuxImagesTest, GoesByContentAmongPixelFormats) {
  writeQuarters(at("a.jpg"), 200, 100);
  std::filesystem::rename(at("a.jpg"), at("misnamed.png"));
  EXPECT_EQ(told(thumbnailOf("misnamed.png")), "64x32 red green blue white");
}

TEST_F(LinuxImagesTest, TurnsPhotographsUpright) {
  writeQuarters(at("flat.jpg"), 200, 100);
  // 6: to be turned a quarter clockwise when shown.
  make({"vips", "copy", at("flat.jpg"), at("a.jpg") + "[strip=false]"});
  make({"python3", "-c",
        "import sys\n"
        "d=open(sys.argv[1],'rb').read()\n"
        "e=b'Exif\\0\\0II*"
        "\\0\\x08\\0\\0\\0\\x01\\0\\x12\\x01\\x03\\0\\x01\\0\\0\\0\\x06\\0\\0\\0\\0\\0\\0\\0'\n"
        "open(sys.argv[2],'wb').write(d[:2]+b'\\xff\\xe1'+(len(e)+2).to_bytes(2,'big')+e+d[2:])\n",
        at("flat.jpg"), at("a.jpg")});
  EXPECT_EQ(told(thumbnailOf("a.jpg")), "32x64 blue red white green");
}

TEST_F(LinuxImagesTest, NeverEnlargesPixels) {
  writeQuarters(at("a.png"), 20, 10);
  EXPECT_EQ(told(thumbnailOf("a.png")), "20x10 red green blue white");
}

TEST_F(LinuxImagesTest, KeepsTransparency) {
  writeFile(at("a.svg"),
            "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 10 10'>"
            "<rect width='5' height='10' fill='blue' fill-opacity='.5'/></svg>");
  const auto image = thumbnailOf("a.svg");
  ASSERT_TRUE(image);
  EXPECT_EQ(colourAt(*image, 0.75, 0.5), "clear");
  const std::size_t pixel = std::size_t{32} * 64 * 4 + 16 * 4;
  EXPECT_EQ(image->pixels.substr(pixel, 3), std::string("\0\0\xff", 3));
  EXPECT_NEAR(static_cast<std::uint8_t>(image->pixels[pixel + 3]), 128, 2);
}

TEST_F(LinuxImagesTest, DrawsSvgAtTheSizeAskedFor) {
  writeFile(at("a.svg"),
            "<svg xmlns='http://www.w3.org/2000/svg' width='20' height='10'>"
            "<rect width='20' height='10' fill='red'/>"
            "<rect x='10' width='10' height='10' fill='blue'/></svg>");
  EXPECT_EQ(told(thumbnailOf("a.svg", 1000, 1000)), "1000x500 red blue red blue");
}

TEST_F(LinuxImagesTest, GivesNothingForWhatHoldsNoPictureOfItself) {
  writeQuarters(at("a.jpg"), 200, 100);
  writeZip(at("without.docx"), "word/document.xml", at("a.jpg"));
  EXPECT_EQ(told(thumbnailOf("without.docx")), "none");
  for (const char* name : {"without.mp3", "without.m4a", "without.flac", "without.ogg",
                           "without.wav", "without.mp4"}) {
    SCOPED_TRACE(name);
    make({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "anullsrc=d=0.2", at(name)});
    EXPECT_EQ(told(thumbnailOf(name)), "none");
  }
}

TEST_F(LinuxImagesTest, GivesNothingForWhatIsNotOfItsFormat) {
  for (const char* name : {"a.png", "a.svg", "a.pdf", "a.docx", "a.odp", "a.mp3", "a.mp4"}) {
    SCOPED_TRACE(name);
    writeFile(at(name), "Not what its name says.");
    EXPECT_EQ(told(thumbnailOf(name)), "none");
    writeFile(at(name), "");
    EXPECT_EQ(told(thumbnailOf(name)), "none");
  }
  for (const char* name : {"a.bin", "a", "a.zip", "a.sh.gz"}) {
    SCOPED_TRACE(name);
    writeQuarters(at("a.png"), 20, 10);
    std::filesystem::rename(at("a.png"), at(name));
    EXPECT_EQ(told(thumbnailOf(name)), "none");
  }
}

TEST_F(LinuxImagesTest, GivesNothingForAnImpossibleSize) {
  writeQuarters(at("a.png"), 20, 10);
  for (const double side : {0.0, 0.9, -5.0, 4097.0, 1e300, std::nan("")}) {
    EXPECT_EQ(told(thumbnailOf("a.png", side, 64)), "none");
    EXPECT_EQ(told(thumbnailOf("a.png", 64, side)), "none");
  }
}

TEST_F(LinuxImagesTest, OpensRegularFilesAlone) {
  std::filesystem::create_directory(at("folder"));
  ASSERT_EQ(mkfifo(at("pipe.png").c_str(), 0644), 0);
  writeQuarters(at("a.png"), 20, 10);
  std::filesystem::create_symlink("a.png", at("link.png"));
  std::filesystem::create_symlink("nowhere", at("dangling.png"));
  for (const char* name : {"folder", "pipe.png", "missing.png", "dangling.png"}) {
    SCOPED_TRACE(name);
    const auto opened = images_.open(at(name));
    ASSERT_FALSE(opened);
    EXPECT_EQ(opened.error(), Refusal::kNoContent);
  }
  EXPECT_EQ(images_.open("/dev/zero").error(), Refusal::kNoContent);
  EXPECT_TRUE(images_.open(at("link.png")));
}

TEST_F(LinuxImagesTest, NeverOpensAPipe) {
  ASSERT_EQ(mkfifo(at("pipe.png").c_str(), 0644), 0);
  const FileDescriptor watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  ASSERT_GE(inotify_add_watch(watch.get(), at("pipe.png").c_str(), IN_OPEN), 0);
  EXPECT_FALSE(images_.open(at("pipe.png")));
  EXPECT_TRUE(images_.icon(at("pipe.png"), 65));
  char event[sizeof(inotify_event) + NAME_MAX + 1];
  EXPECT_EQ(read(watch.get(), event, sizeof event), -1) << "no event";
  const FileDescriptor opened(open(at("pipe.png").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  EXPECT_GT(read(watch.get(), event, sizeof event), 0) << "though one would be told";
}

TEST_F(LinuxImagesTest, TellsWhatMayNotBeReadFromWhatIsNotThere) {
  if (geteuid() != 0) GTEST_SKIP() << "needs an account that may not read the file";
  writeQuarters(at("a.png"), 20, 10);
  chmod(at("a.png").c_str(), 0600);
  ASSERT_EQ(seteuid(65534), 0);
  const auto opened = images_.open(at("a.png"));
  ASSERT_EQ(seteuid(0), 0);
  ASSERT_FALSE(opened);
  EXPECT_EQ(opened.error(), Refusal::kForbidden);
}

TEST_F(LinuxImagesTest, HandlesAnyName) {
  std::string name(251, 'n');
  name[3] = '\n';
  name[4] = '\xff';
  writeQuarters(at("a.png"), 200, 100);
  std::filesystem::rename(at("a.png"), at(name + ".png"));
  EXPECT_EQ(told(thumbnailOf(name + ".png")), "64x32 red green blue white");
}

TEST_F(LinuxImagesTest, TriesAFailedFileAgainOnceItChanged) {
  writeFile(at("a.png"), "damaged");
  EXPECT_EQ(told(thumbnailOf("a.png")), "none");
  writeQuarters(at("good.png"), 20, 10);
  writeFile(at("a.png"), readFile(at("good.png")));
  EXPECT_EQ(told(thumbnailOf("a.png")), "20x10 red green blue white");
}

TEST_F(LinuxImagesTest, RemembersAFileThatFailed) {
  writeQuarters(at("good.png"), 20, 10);
  const std::string good = readFile(at("good.png"));
  writeFile(at("a.png"), std::string(good.size(), 'x'));
  const timespec times[2] = {{1000, 0}, {1000, 0}};
  utimensat(AT_FDCWD, at("a.png").c_str(), times, 0);
  EXPECT_EQ(told(thumbnailOf("a.png")), "none");
  // The same file, date and size: nothing says that it could be tried again.
  writeFile(at("a.png"), good);
  utimensat(AT_FDCWD, at("a.png").c_str(), times, 0);
  EXPECT_EQ(told(thumbnailOf("a.png")), "none");
  utimensat(AT_FDCWD, at("a.png").c_str(), nullptr, 0);
  EXPECT_EQ(told(thumbnailOf("a.png")), "20x10 red green blue white");
}

TEST_F(LinuxImagesTest, MakesAnyNumberOfThumbnailsOfASource) {
  writeSample(at("a.jpg"));
  const auto source = images_.open(at("a.jpg"));
  ASSERT_TRUE(source);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(told(images_.thumbnail(**source, {64, 64, true})), "64x32 red green blue white");
  }
}

TEST_F(LinuxImagesTest, GivesNothingForASourceThatIsEmptiedMeanwhile) {
  writeSample(at("a.jpg"));
  const auto source = images_.open(at("a.jpg"));
  ASSERT_TRUE(source);
  std::filesystem::resize_file(at("a.jpg"), 0);
  EXPECT_EQ(told(images_.thumbnail(**source, {64, 64, true})), "none");
  writeSample(at("a.jpg"));
  EXPECT_EQ(told(thumbnailOf("a.jpg")), "64x32 red green blue white");
}

TEST_F(LinuxImagesTest, OutlivesASourceThatVanishes) {
  writeQuarters(at("a.png"), 200, 100);
  const auto source = images_.open(at("a.png"));
  ASSERT_TRUE(source);
  std::filesystem::remove(at("a.png"));
  EXPECT_EQ(told(images_.thumbnail(**source, {64, 64, true})), "64x32 red green blue white");
}

TEST_F(LinuxImagesTest, HasAnIconForWhateverIsThere) {
  std::filesystem::create_directory(at("folder"));
  std::filesystem::create_directory(at("folder.app"));
  ASSERT_EQ(mkfifo(at("pipe").c_str(), 0644), 0);
  std::set<std::string> drawings;
  for (const char* name : {"folder", "folder.app", "a.pdf", "a.docx", "a.odp", "a.xlsx", "a.mp3",
                           "a.mp4", "a.zip", "a.cpp", "a.png", "a.unheard-of"}) {
    SCOPED_TRACE(name);
    if (std::string_view(name).starts_with("a.")) writeFile(at(name), "x");
    const auto icon = images_.icon(at(name), 65);
    ASSERT_TRUE(icon);
    EXPECT_EQ(std::max(icon->width, icon->height), 65U);
    EXPECT_EQ(colourAt(*icon, 0.01, 0.99), "clear");
    EXPECT_TRUE(drawings.insert(icon->pixels).second) << "and one of its own";
  }
  EXPECT_TRUE(images_.icon(at("pipe"), 65));
  EXPECT_EQ(images_.icon(at("missing"), 65), std::nullopt);
}

TEST_F(LinuxImagesTest, DrawsIconsAtAnySizeItGives) {
  writeFile(at("a.pdf"), "x");
  for (const std::int64_t size : {1, 16, 1024, 4096}) {
    const auto icon = images_.icon(at("a.pdf"), size);
    ASSERT_TRUE(icon) << size;
    EXPECT_EQ(icon->height, size);
  }
  for (const std::int64_t size : {INT64_MIN, INT64_C(-1), INT64_C(0), INT64_C(4097), INT64_MAX}) {
    EXPECT_EQ(images_.icon(at("a.pdf"), size), std::nullopt) << size;
  }
}

TEST_F(LinuxImagesTest, HasIconsOfKnownTypesAloneAndCanDrawEach) {
  const auto types = testImages().types;
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(resourcePath("icons"))) {
    SCOPED_TRACE(entry.path().filename().string());
    EXPECT_TRUE(types->find(entry.path().stem().string()));
    std::filesystem::copy_file(entry.path(), at("icon.svg"),
                               std::filesystem::copy_options::overwrite_existing);
    const auto drawn = thumbnailOf("icon.svg");
    ASSERT_TRUE(drawn);
    EXPECT_NE(drawn->pixels, std::string(drawn->pixels.size(), 0));
    ++count;
  }
  EXPECT_GT(count, 30);
}

TEST_F(LinuxImagesTest, StartsAnotherWorkerWhenOneHasEnded) {
  writeSample(at("a.jpg"));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(told(thumbnailOf("a.jpg")), "64x32 red green blue white");
    EXPECT_TRUE(images_.icon(at("a.jpg"), 65));
    ASSERT_FALSE(descendants("vistaro-images").empty());
    for (const pid_t worker : descendants("vistaro-images")) kill(worker, SIGKILL);
  }
  EXPECT_TRUE(images_.icon(at("a.jpg"), 65));
}

TEST_F(LinuxImagesTest, DoesWithoutItsProgram) {
  LinuxImages::Setup setup = testImages();
  setup.program = "/nonexistent";
  LinuxImages images(setup);
  writeQuarters(at("a.png"), 20, 10);
  const auto source = images.open(at("a.png"));
  ASSERT_TRUE(source);
  EXPECT_EQ(images.thumbnail(**source, {64, 64, true}), std::nullopt);
  EXPECT_EQ(images.icon(at("a.png"), 64), std::nullopt);
  EXPECT_EQ(images.walls(), std::nullopt);
}

}  // namespace
}  // namespace vt
