#include "images/worker/AudioDecoder.h"

#include <taglib/aifffile.h>
#include <taglib/attachedpictureframe.h>
#include <taglib/fileref.h>
#include <taglib/flacfile.h>
#include <taglib/id3v2tag.h>
#include <taglib/mp4file.h>
#include <taglib/mpegfile.h>
#include <taglib/tfilestream.h>
#include <taglib/wavfile.h>
#include <taglib/xiphcomment.h>
#include <unistd.h>

#include <string>

#include "images/worker/PixelDecoder.h"

namespace vt::worker {
namespace {

std::string bytesOf(const TagLib::ByteVector& bytes) { return {bytes.data(), bytes.size()}; }

/// The front cover, else the first picture; "" when there is none.
std::string coverOf(TagLib::ID3v2::Tag* tag) {
  std::string first;
  if (!tag) return first;
  for (TagLib::ID3v2::Frame* frame : tag->frameList("APIC")) {
    const auto* picture = dynamic_cast<TagLib::ID3v2::AttachedPictureFrame*>(frame);
    if (!picture) continue;
    if (picture->type() == TagLib::ID3v2::AttachedPictureFrame::FrontCover) {
      return bytesOf(picture->picture());
    }
    if (first.empty()) first = bytesOf(picture->picture());
  }
  return first;
}

std::string coverOf(const TagLib::List<TagLib::FLAC::Picture*>& pictures) {
  for (const TagLib::FLAC::Picture* picture : pictures) {
    if (picture->type() == TagLib::FLAC::Picture::FrontCover) return bytesOf(picture->data());
  }
  return pictures.isEmpty() ? std::string() : bytesOf(pictures.front()->data());
}

std::string coverOf(TagLib::MP4::Tag* tag) {
  if (!tag || !tag->contains("covr")) return "";
  const TagLib::MP4::CoverArtList covers = tag->item("covr").toCoverArtList();
  return covers.isEmpty() ? std::string() : bytesOf(covers.front().data());
}

std::string coverIn(TagLib::File& file) {
  if (auto* mpeg = dynamic_cast<TagLib::MPEG::File*>(&file)) return coverOf(mpeg->ID3v2Tag());
  if (auto* mp4 = dynamic_cast<TagLib::MP4::File*>(&file)) return coverOf(mp4->tag());
  if (auto* wav = dynamic_cast<TagLib::RIFF::WAV::File*>(&file)) return coverOf(wav->ID3v2Tag());
  if (auto* aiff = dynamic_cast<TagLib::RIFF::AIFF::File*>(&file)) return coverOf(aiff->tag());
  if (auto* flac = dynamic_cast<TagLib::FLAC::File*>(&file)) {
    return coverOf(flac->pictureList());
  }
  if (auto* comment = dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag())) {
    return coverOf(comment->pictureList());
  }
  return "";
}

}  // namespace

std::optional<Image> decodeAudio(const DecodeJob& job) {
  // The stream closes the descriptor that it is given.
  TagLib::FileStream stream(::dup(job.descriptor), /*openReadOnly=*/true);
  // Without looking at the sound itself.
  const TagLib::FileRef file(&stream, /*readAudioProperties=*/false);
  if (file.isNull() || !file.file()) return std::nullopt;
  const std::string cover = coverIn(*file.file());
  if (cover.empty()) return std::nullopt;
  return decodePixelsIn(cover, {job.width, job.height});
}

}  // namespace vt::worker
