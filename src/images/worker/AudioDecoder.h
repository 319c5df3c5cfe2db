#pragma once

#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// The cover that the tags of a sound file hold: ID3, MP4, FLAC or Vorbis comments.
std::optional<Image> decodeAudio(const DecodeJob& job);

}  // namespace vt::worker
