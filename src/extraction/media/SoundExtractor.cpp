#include "extraction/media/SoundExtractor.h"

#include <taglib/aifffile.h>
#include <taglib/apefile.h>
#include <taglib/asffile.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/mp4file.h>
#include <taglib/mpcfile.h>
#include <taglib/mpegfile.h>
#include <taglib/opusfile.h>
#include <taglib/tfilestream.h>
#include <taglib/tpropertymap.h>
#include <taglib/vorbisfile.h>
#include <taglib/wavfile.h>
#include <taglib/wavpackfile.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "extraction/FoundAttributes.h"
#include "extraction/media/WrittenDate.h"

namespace vt {
namespace {

/// What a tag is called, whatever the format calls it, and where its texts go.
struct TagRow {
  const char* tag;
  const char* attribute;
  bool isList;
};

constexpr TagRow kRows[] = {
    {"TITLE", "kMDItemTitle", false},
    {"ARTIST", "kMDItemAuthors", true},
    {"ALBUMARTIST", "kMDItemContributors", true},
    {"CONDUCTOR", "kMDItemContributors", true},
    {"REMIXER", "kMDItemContributors", true},
    {"PERFORMER", "kMDItemPerformers", true},
    {"ALBUM", "kMDItemAlbum", false},
    {"COMPOSER", "kMDItemComposer", false},
    {"LYRICIST", "kMDItemLyricist", false},
    {"GENRE", "kMDItemMusicalGenre", false},
    {"COMMENT", "kMDItemComment", false},
    {"DESCRIPTION", "kMDItemDescription", false},
    {"COPYRIGHT", "kMDItemCopyright", false},
    {"LABEL", "kMDItemPublishers", true},
    {"LANGUAGE", "kMDItemLanguages", true},
    {"INITIALKEY", "kMDItemKeySignature", false},
    {"ENCODING", "kMDItemAudioEncodingApplication", false},
    {"ISRC", "kMDItemIdentifier", false},
};

std::string utf8(const TagLib::String& text) { return text.to8Bit(/*unicode=*/true); }

/// The texts of a tag, those of several languages among them.
TagLib::StringList textsOf(const TagLib::PropertyMap& tags, const char* name) {
  TagLib::StringList texts = tags.contains(name) ? tags[name] : TagLib::StringList();
  const TagLib::String otherLanguage = TagLib::String(name) + ":";
  for (const auto& [key, list] : tags) {
    if (key.startsWith(otherLanguage)) texts.append(list);
  }
  return texts;
}

/// The number at the beginning of "3/12"; nothing when there is none above 0.
void tellNumber(const TagLib::PropertyMap& tags, const char* tag, const char* attribute,
                FoundAttributes& found) {
  for (const TagLib::String& text : textsOf(tags, tag)) {
    const double number = std::strtod(utf8(text).c_str(), nullptr);
    if (number > 0) found.setNumber(attribute, number);
  }
}

void tellTags(const TagLib::PropertyMap& tags, FoundAttributes& found) {
  for (const TagRow& row : kRows) {
    for (const TagLib::String& text : textsOf(tags, row.tag)) {
      if (row.isList) {
        found.addText(row.attribute, utf8(text));
      } else {
        found.setText(row.attribute, utf8(text));
      }
    }
  }
  tellNumber(tags, "TRACKNUMBER", "kMDItemAudioTrackNumber", found);
  tellNumber(tags, "BPM", "kMDItemTempo", found);
  for (const TagLib::String& text : textsOf(tags, "DATE")) {
    const std::string written = utf8(text);
    if (const std::optional<int> year = yearOfWritten(written)) {
      found.setNumber("kMDItemRecordingYear", *year);
    }
    found.setDate("kMDItemRecordingDate", dateOfWritten(written));
  }
}

/// What people call the way in which the sound is stored.
const char* codecOf(const TagLib::File& file) {
  if (const auto* mp4 = dynamic_cast<const TagLib::MP4::File*>(&file)) {
    return mp4->audioProperties()->codec() == TagLib::MP4::Properties::ALAC ? "Apple Lossless"
                                                                            : "MPEG-4 AAC";
  }
  if (const auto* mpeg = dynamic_cast<const TagLib::MPEG::File*>(&file)) {
    return mpeg->audioProperties()->layer() == 3 ? "MP3" : "MP2";
  }
  if (dynamic_cast<const TagLib::FLAC::File*>(&file)) return "FLAC";
  if (dynamic_cast<const TagLib::Ogg::Vorbis::File*>(&file)) return "Vorbis";
  if (dynamic_cast<const TagLib::Ogg::Opus::File*>(&file)) return "Opus";
  if (dynamic_cast<const TagLib::ASF::File*>(&file)) return "Windows Media Audio";
  if (dynamic_cast<const TagLib::APE::File*>(&file)) return "Monkey's Audio";
  if (dynamic_cast<const TagLib::MPC::File*>(&file)) return "Musepack";
  if (dynamic_cast<const TagLib::WavPack::File*>(&file)) return "WavPack";
  if (const auto* wave = dynamic_cast<const TagLib::RIFF::WAV::File*>(&file)) {
    constexpr int kPlain = 1;
    constexpr int kPlainReal = 3;
    const int format = wave->audioProperties()->format();
    return format == kPlain || format == kPlainReal ? "Linear PCM" : "";
  }
  if (const auto* aiff = dynamic_cast<const TagLib::RIFF::AIFF::File*>(&file)) {
    return aiff->audioProperties()->isAiffC() ? "" : "Linear PCM";
  }
  return "";
}

void tellSound(TagLib::File& file, FoundAttributes& found) {
  constexpr double kMillis = 1000;
  const TagLib::AudioProperties* const sound = file.audioProperties();
  if (sound == nullptr || sound->sampleRate() <= 0) return;
  found.addText("kMDItemMediaTypes", "Sound");
  found.addText("kMDItemCodecs", codecOf(file));
  found.setNumber("kMDItemDurationSeconds", sound->lengthInMilliseconds() / kMillis);
  found.setNumber("kMDItemAudioSampleRate", sound->sampleRate());
  if (sound->channels() > 0) found.setNumber("kMDItemAudioChannelCount", sound->channels());
  if (sound->bitrate() > 0) found.setNumber("kMDItemAudioBitRate", sound->bitrate() * kMillis);
}

}  // namespace

SoundExtractor::SoundExtractor(const ContentTypes& types)
    : types_(types,
             {"public.mp3", "public.mp2", "public.mpeg-4-audio", "com.apple.protected-mpeg-4-audio",
              "public.aifc-audio", "com.microsoft.waveform-audio", "org.xiph.flac",
              "org.xiph.ogg-audio", "org.xiph.opus", "org.videolan.ape", "org.videolan.wv",
              "org.videolan.mpc", "com.microsoft.windows-media-wma"}) {}

Result<Extraction, ExtractionFailure> SoundExtractor::extract(int file, ContentTypeId /*type*/) {
  // The stream closes the descriptor that it is given.
  TagLib::FileStream stream(::dup(file), /*openReadOnly=*/true);
  const TagLib::FileRef sound(&stream);
  if (sound.isNull() || sound.file() == nullptr || !sound.file()->isValid()) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed,
                             "it holds no sound that is known"};
  }
  Extraction extraction;
  FoundAttributes found(extraction);
  const TagLib::PropertyMap tags = sound.file()->properties();
  tellTags(tags, found);
  tellSound(*sound.file(), found);
  extraction.text.emplace();
  for (const TagLib::String& lyrics : textsOf(tags, "LYRICS")) {
    extraction.text->append(tidiedText(utf8(lyrics))).append("\n");
  }
  return extraction;
}

}  // namespace vt
