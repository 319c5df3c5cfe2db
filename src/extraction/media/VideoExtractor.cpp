#include "extraction/media/VideoExtractor.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>

#include "av/AvInput.h"
#include "extraction/FoundAttributes.h"
#include "extraction/media/WrittenDate.h"

namespace vt {
namespace {

/// What people call the ways in which streams are stored.
constexpr std::pair<AVCodecID, const char*> kCodecs[] = {
    {AV_CODEC_ID_H264, "H.264"},
    {AV_CODEC_ID_HEVC, "HEVC"},
    {AV_CODEC_ID_AV1, "AV1"},
    {AV_CODEC_ID_VP8, "VP8"},
    {AV_CODEC_ID_VP9, "VP9"},
    {AV_CODEC_ID_MPEG1VIDEO, "MPEG-1 Video"},
    {AV_CODEC_ID_MPEG2VIDEO, "MPEG-2 Video"},
    {AV_CODEC_ID_MPEG4, "MPEG-4 Video"},
    {AV_CODEC_ID_MJPEG, "Motion JPEG"},
    {AV_CODEC_ID_PRORES, "Apple ProRes"},
    {AV_CODEC_ID_DVVIDEO, "DV"},
    {AV_CODEC_ID_THEORA, "Theora"},
    {AV_CODEC_ID_FLV1, "Sorenson Spark"},
    {AV_CODEC_ID_MSMPEG4V3, "Microsoft MPEG-4"},
    {AV_CODEC_ID_WMV1, "Windows Media Video 7"},
    {AV_CODEC_ID_WMV2, "Windows Media Video 8"},
    {AV_CODEC_ID_WMV3, "Windows Media Video 9"},
    {AV_CODEC_ID_AAC, "MPEG-4 AAC"},
    {AV_CODEC_ID_ALAC, "Apple Lossless"},
    {AV_CODEC_ID_MP2, "MP2"},
    {AV_CODEC_ID_MP3, "MP3"},
    {AV_CODEC_ID_AC3, "AC-3"},
    {AV_CODEC_ID_EAC3, "Enhanced AC-3"},
    {AV_CODEC_ID_DTS, "DTS"},
    {AV_CODEC_ID_FLAC, "FLAC"},
    {AV_CODEC_ID_OPUS, "Opus"},
    {AV_CODEC_ID_VORBIS, "Vorbis"},
    {AV_CODEC_ID_WMAV1, "Windows Media Audio"},
    {AV_CODEC_ID_WMAV2, "Windows Media Audio"},
};

/// What a field of a container is called, and where its text goes.
struct FieldRow {
  const char* field;
  const char* attribute;
  bool isList;
};

constexpr FieldRow kRows[] = {
    {"title", "kMDItemTitle", false},
    {"artist", "kMDItemAuthors", true},
    {"author", "kMDItemAuthors", true},
    {"album", "kMDItemAlbum", false},
    {"composer", "kMDItemComposer", false},
    {"performer", "kMDItemPerformers", true},
    {"director", "kMDItemDirector", false},
    {"producer", "kMDItemProducer", false},
    {"publisher", "kMDItemPublishers", true},
    {"description", "kMDItemDescription", false},
    {"synopsis", "kMDItemDescription", false},
    {"comment", "kMDItemComment", false},
    {"copyright", "kMDItemCopyright", false},
    {"keywords", "kMDItemKeywords", true},
    {"make", "kMDItemAcquisitionMake", false},
    {"com.apple.quicktime.make", "kMDItemAcquisitionMake", false},
    {"model", "kMDItemAcquisitionModel", false},
    {"com.apple.quicktime.model", "kMDItemAcquisitionModel", false},
    {"encoder", "kMDItemEncodingApplications", true},
};

std::string textOf(const AVDictionary* fields, const char* name) {
  const AVDictionaryEntry* const entry = av_dict_get(fields, name, nullptr, 0);
  return entry == nullptr ? std::string() : std::string(entry->value);
}

/// Degrees and metres of ISO 6709: "+52.5200+013.4050+034.000/".
void tellPlace(const std::string& written, FoundAttributes& found) {
  const char* at = written.c_str();
  char* end = nullptr;
  const double latitude = std::strtod(at, &end);
  if (end == at) return;
  at = end;
  const double longitude = std::strtod(at, &end);
  if (end == at || std::abs(latitude) > 90 || std::abs(longitude) > 180) return;
  found.setNumber("kMDItemLatitude", latitude);
  found.setNumber("kMDItemLongitude", longitude);
  at = end;
  const double altitude = std::strtod(at, &end);
  if (end != at) found.setNumber("kMDItemAltitude", altitude);
}

/// `genre` is where the field of that name goes, which is about music where there is only sound.
void tellFields(const AVDictionary* fields, const char* genre, FoundAttributes& found) {
  found.setText(genre, textOf(fields, "genre"));
  for (const FieldRow& row : kRows) {
    const std::string text = textOf(fields, row.field);
    if (std::string_view(row.field) == "keywords") {
      found.addTexts(row.attribute, text, ",;");
    } else if (row.isList) {
      found.addText(row.attribute, text);
    } else {
      found.setText(row.attribute, text);
    }
  }
  for (const char* name : {"creation_time", "com.apple.quicktime.creationdate"}) {
    found.setDate("kMDItemContentCreationDate", dateOfWritten(textOf(fields, name)));
  }
  if (const auto year = yearOfWritten(textOf(fields, "date"))) {
    found.setNumber("kMDItemRecordingYear", *year);
  }
  for (const char* name : {"com.apple.quicktime.location.ISO6709", "location"}) {
    tellPlace(textOf(fields, name), found);
  }
}

std::string codecOf(AVCodecID codec) {
  const auto* const known =
      std::ranges::find(kCodecs, codec, [](const auto& row) { return row.first; });
  if (known != std::end(kCodecs)) return known->second;
  if (codec == AV_CODEC_ID_NONE) return "";
  const std::string name = avcodec_get_name(codec);
  return name.starts_with("pcm_") ? "Linear PCM" : name;
}

bool isCover(const AVStream& stream) {
  return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

/// Of the first stream that has pixels, as it is seen: turned, and with square pixels.
void tellPixels(const AVStream& stream, FoundAttributes& found) {
  int width = stream.codecpar->width;
  int height = stream.codecpar->height;
  if (width <= 0 || height <= 0) return;
  if (AvInput::quarterTurns(stream) % 2 == 1) std::swap(width, height);
  found.setNumber("kMDItemPixelWidth", width);
  found.setNumber("kMDItemPixelHeight", height);
  found.setNumber("kMDItemPixelCount", static_cast<double>(width) * height);
  found.setNumber("kMDItemOrientation", height > width ? 1 : 0);
}

/// Bits per second; a stream says nothing of it when it claims more than all together have.
void tellBitRate(const char* attribute, std::int64_t bitRate, std::int64_t ofAll,
                 FoundAttributes& found) {
  if (bitRate <= 0 || (ofAll > 0 && bitRate > ofAll)) return;
  found.setNumber(attribute, static_cast<double>(bitRate));
}

void tellStream(const AVStream& stream, std::int64_t bitRateOfAll, FoundAttributes& found) {
  const AVCodecParameters& stored = *stream.codecpar;
  switch (stored.codec_type) {
    case AVMEDIA_TYPE_VIDEO:
      if (isCover(stream)) return;
      found.addText("kMDItemMediaTypes", "Video");
      tellPixels(stream, found);
      tellBitRate("kMDItemVideoBitRate", stored.bit_rate, bitRateOfAll, found);
      break;
    case AVMEDIA_TYPE_AUDIO:
      found.addText("kMDItemMediaTypes", "Sound");
      if (stored.sample_rate > 0) found.setNumber("kMDItemAudioSampleRate", stored.sample_rate);
      if (stored.ch_layout.nb_channels > 0) {
        found.setNumber("kMDItemAudioChannelCount", stored.ch_layout.nb_channels);
      }
      tellBitRate("kMDItemAudioBitRate", stored.bit_rate, bitRateOfAll, found);
      break;
    case AVMEDIA_TYPE_SUBTITLE:
      found.addText("kMDItemMediaTypes", "Text");
      break;
    default:
      return;
  }
  found.addText("kMDItemCodecs", codecOf(stored.codec_id));
  const std::string language = textOf(stream.metadata, "language");
  constexpr const char* kUndetermined = "und";
  if (language != kUndetermined) found.addText("kMDItemLanguages", language);
}

}  // namespace

VideoExtractor::VideoExtractor(const ContentTypes& types)
    : types_(types,
             {"public.movie", "com.microsoft.advanced-systems-format", "public.aac-audio",
              "public.ac3-audio", "public.enhanced-ac3-audio", "com.sony.wave64",
              "com.apple.coreaudio-format", "public.au-audio", "org.matroska.mka",
              "org.videolan.dts", "org.3gpp.adaptive-multi-rate-audio"},
             {"com.blackmagic-design.braw", "com.red.r3d"}) {}

Result<Extraction, ExtractionFailure> VideoExtractor::extract(int file, ContentTypeId /*type*/) {
  const std::unique_ptr<AvInput> input = AvInput::open(file);
  if (!input || input->format()->nb_streams == 0) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed,
                             "it holds no stream that is known"};
  }
  const AVFormatContext& format = *input->format();
  Extraction extraction;
  FoundAttributes found(extraction);
  const std::span<AVStream* const> streams(format.streams, format.nb_streams);
  const bool hasPixels = std::ranges::any_of(streams, [](const AVStream* stream) {
    return stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isCover(*stream);
  });
  const char* const genre = hasPixels ? "kMDItemGenre" : "kMDItemMusicalGenre";
  tellFields(format.metadata, genre, found);
  for (const AVStream* stream : streams) {
    // Of several streams each may bear a name, which is not that of the whole.
    if (av_dict_count(format.metadata) == 0) tellFields(stream->metadata, genre, found);
    tellStream(*stream, format.bit_rate, found);
  }
  if (format.duration > 0) {
    found.setNumber("kMDItemDurationSeconds", static_cast<double>(format.duration) / AV_TIME_BASE);
  }
  tellBitRate("kMDItemTotalBitRate", format.bit_rate, 0, found);
  return extraction;
}

}  // namespace vt
