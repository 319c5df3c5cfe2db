#include "extraction/media/VideoExtractor.h"

#include <gmock/gmock.h>

#include "extraction/media/Extracted.h"
#include "extraction/media/Samples.h"
#include "images/Samples.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;

const std::vector<std::string> kOfPixels = {
    "kMDItemAudioChannelCount", "kMDItemAudioSampleRate", "kMDItemCodecs",
    "kMDItemMediaTypes",        "kMDItemOrientation",     "kMDItemPixelCount",
    "kMDItemPixelHeight",       "kMDItemPixelWidth"};
const std::vector<std::string> kOfPeople = {
    "kMDItemAuthors",   "kMDItemComment",     "kMDItemContentCreationDate",
    "kMDItemCopyright", "kMDItemDescription", "kMDItemGenre",
    "kMDItemTitle"};

TEST(VideoExtractor, TellsTheStreamsOfEachContainer) {
  struct Case {
    const char* ending;
    const char* codecs;
  };
  const Case cases[] = {
      {"mp4", "'H.264', 'MPEG-4 AAC'"},
      {"mov", "'H.264', 'MPEG-4 AAC'"},
      {"mkv", "'H.264', 'Vorbis'"},
      {"webm", "'VP9', 'Opus'"},
      {"avi", "'MPEG-4 Video', 'MP3'"},
      {"mpg", "'MPEG-1 Video', 'MP2'"},
      {"ts", "'MPEG-2 Video', 'MP2'"},
      {"ogv", "'Theora', 'Vorbis'"},
      {"wmv", "'Microsoft MPEG-4', 'Windows Media Audio'"},
      {"mxf", "'MPEG-2 Video', 'Linear PCM'"},
  };
  const TemporaryFolder folder;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.ending);
    const std::string path = folder / ("film." + std::string(c.ending));
    writeVideo(path);
    const std::vector<std::string> lines = attributesIn(path);
    EXPECT_THAT(
        only(kOfPixels, lines),
        ElementsAre("kMDItemAudioChannelCount 2", "kMDItemAudioSampleRate 48000",
                    "kMDItemCodecs [" + std::string(c.codecs) + "]",
                    "kMDItemMediaTypes ['Video', 'Sound']", "kMDItemOrientation 0",
                    "kMDItemPixelCount 57600", "kMDItemPixelHeight 180", "kMDItemPixelWidth 320"));
    EXPECT_THAT(lines, Contains(StartsWith("kMDItemDurationSeconds 1")));
    EXPECT_THAT(lines, Contains(StartsWith("kMDItemTotalBitRate ")));
  }
}

TEST(VideoExtractor, TellsWhatPeopleWrote) {
  const TemporaryFolder folder;
  for (const char* ending : {"mp4", "mkv", "webm"}) {
    SCOPED_TRACE(ending);
    const std::string path = folder / ("film." + std::string(ending));
    writeVideo(path);
    EXPECT_THAT(only(kOfPeople, attributesIn(path)),
                ElementsAre("kMDItemAuthors ['Maker']", "kMDItemComment 'A comment'",
                            "kMDItemContentCreationDate 2020-02-03T04:05:06.000000Z",
                            "kMDItemCopyright 'free'", "kMDItemDescription 'What happens'",
                            "kMDItemGenre 'Drama'", "kMDItemTitle 'A Film'"));
  }
}

TEST(VideoExtractor, TellsTheSizeAsItIsSeenAndThePlace) {
  const TemporaryFolder folder;
  writeVideo(folder / "film.mp4");
  make({"ffmpeg", "-y", "-v", "error", "-i", folder / "film.mp4", "-c", "copy", "-metadata:s:v",
        "rotate=90", "-metadata", "location=+52.5200-013.4050+034.000/", folder / "turned.mp4"});
  const std::vector<std::string> lines = attributesIn(folder / "turned.mp4");
  EXPECT_THAT(
      only({"kMDItemPixelWidth", "kMDItemPixelHeight", "kMDItemOrientation"}, lines),
      ElementsAre("kMDItemOrientation 1", "kMDItemPixelHeight 320", "kMDItemPixelWidth 180"));
  EXPECT_THAT(only({"kMDItemLatitude", "kMDItemLongitude"}, lines),
              ElementsAre("kMDItemLatitude 52.52", "kMDItemLongitude -13.405"));
}

TEST(VideoExtractor, TellsOfSoundThatHasNoTagsOfTheCommonSorts) {
  const TemporaryFolder folder;
  for (const char* ending : {"aac", "ac3", "caf", "mka", "au"}) {
    SCOPED_TRACE(ending);
    const std::string path = folder / ("sound." + std::string(ending));
    writeSound(path);
    EXPECT_THAT(attributesIn(path), AllOf(Contains("kMDItemMediaTypes ['Sound']"),
                                          Contains("kMDItemAudioSampleRate 44100"),
                                          Contains(StartsWith("kMDItemDurationSeconds 2")),
                                          Not(Contains(StartsWith("kMDItemPixelWidth")))));
  }
  EXPECT_THAT(attributesIn(folder / "sound.mka"), Contains("kMDItemMusicalGenre 'Jazz'"));
}

TEST(VideoExtractor, OpensNoListOfOtherFiles) {
  const TemporaryFolder folder;
  writeVideo(folder / "film.ts");
  writeFile(folder / "list.mp4",
            "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\n" + (folder / "film.ts") + "\n");
  writeFile(folder / "joined.mp4", "ffconcat version 1.0\nfile " + (folder / "film.ts") + "\n");
  for (const char* name : {"list.mp4", "joined.mp4"}) {
    SCOPED_TRACE(name);
    EXPECT_THAT(attributesIn(folder / name), ElementsAre("it holds no stream that is known"));
  }
}

TEST(VideoExtractor, ComesToAnEndWithDamagedVideos) {
  const TemporaryFolder folder;
  unsigned seed = 200;
  for (const char* ending : {"mp4", "mkv", "avi", "mpg", "ogv", "wmv"}) {
    SCOPED_TRACE(ending);
    const std::string path = folder / ("damage." + std::string(ending));
    writeVideo(path);
    EXPECT_EQ(outcomeOfMangled(path, ++seed), "");
  }
}

}  // namespace
}  // namespace vt
