#include "extraction/media/SoundExtractor.h"

#include <gmock/gmock.h>

#include "extraction/media/Extracted.h"
#include "extraction/media/Samples.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::StartsWith;

TEST(SoundExtractor, TellsTagsAndSound) {
  struct Case {
    const char* ending;
    const char* codec;
    const char* duration;
    const char* sampleRate;
    bool hasAllTags;
    const char* comment = "kMDItemComment 'A comment'";
  };
  const char* const description = "kMDItemDescription 'A comment'";
  const Case cases[] = {
      {"mp3", "MP3", "2.038", "44100", true},
      {"m4a", "MPEG-4 AAC", "2.023", "44100", true},
      {"flac", "FLAC", "2", "44100", true, description},
      {"ogg", "Vorbis", "2", "44100", true, description},
      {"opus", "Opus", "2", "48000", true, description},
      {"aiff", "Linear PCM", "2", "44100", true},
      {"wav", "Linear PCM", "2", "44100", false},
  };
  const TemporaryFolder folder;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.ending);
    const std::string path = folder / ("sound." + std::string(c.ending));
    writeSound(path);
    const std::vector<std::string> lines = attributesIn(path);
    std::vector<std::string> wanted = {"kMDItemAlbum 'Album'",
                                       "kMDItemAudioChannelCount 2",
                                       "kMDItemAudioSampleRate " + std::string(c.sampleRate),
                                       "kMDItemAudioTrackNumber 3",
                                       "kMDItemAuthors ['One']",
                                       "kMDItemCodecs ['" + std::string(c.codec) + "']",
                                       c.comment,
                                       "kMDItemDurationSeconds " + std::string(c.duration),
                                       "kMDItemMediaTypes ['Sound']",
                                       "kMDItemMusicalGenre 'Jazz'",
                                       "kMDItemRecordingYear 1999",
                                       "kMDItemTitle 'A Song'"};
    if (c.hasAllTags) {
      wanted.insert(wanted.end(), {"kMDItemComposer 'Composer'", "kMDItemCopyright '2000'"});
    }
    std::vector<std::string> told;
    for (const std::string& line : lines) {
      // Which depend on the encoder and on the zone.
      const bool isLeftOut = line.starts_with("kMDItemAudioBitRate") ||
                             line.starts_with("kMDItemAudioEncoding") ||
                             line.starts_with("kMDItemRecordingDate");
      if (!isLeftOut) told.push_back(line);
    }
    EXPECT_THAT(told, testing::UnorderedElementsAreArray(wanted));
    EXPECT_THAT(lines, Contains(StartsWith("kMDItemAudioBitRate ")));
  }
}

TEST(SoundExtractor, TellsBitsPerSecondAndTheProgramThatEncoded) {
  const TemporaryFolder folder;
  writeSound(folder / "sound.wav");
  EXPECT_THAT(attributesIn(folder / "sound.wav"), Contains("kMDItemAudioBitRate 1411000"));
  writeSound(folder / "sound.mp3");
  EXPECT_THAT(attributesIn(folder / "sound.mp3"),
              Contains(StartsWith("kMDItemAudioEncodingApplication 'Lavf")));
}

TEST(SoundExtractor, TakesTheWordsOfASongForItsText) {
  const TemporaryFolder folder;
  writeSound(folder / "song.m4a");
  EXPECT_EQ(textIn(folder / "song.m4a"), "La la la\n");
  writeSound(folder / "song.wav");
  EXPECT_EQ(textIn(folder / "song.wav"), "");
}

TEST(SoundExtractor, FailsWhereThereIsNoSound) {
  const TemporaryFolder folder;
  writeFile(folder / "none.mp3", "no sound");
  EXPECT_THAT(attributesIn(folder / "none.mp3"), ElementsAre("it holds no sound that is known"));
}

TEST(SoundExtractor, ComesToAnEndWithDamagedSound) {
  const TemporaryFolder folder;
  unsigned seed = 100;
  for (const char* ending : {"mp3", "m4a", "flac", "ogg", "opus", "aiff", "wav"}) {
    SCOPED_TRACE(ending);
    const std::string path = folder / ("damage." + std::string(ending));
    writeSound(path);
    EXPECT_EQ(outcomeOfMangled(path, ++seed), "");
  }
}

}  // namespace
}  // namespace vt
