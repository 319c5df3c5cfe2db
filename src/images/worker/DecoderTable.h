#pragma once

#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// The decoders that this build has.
class DecoderTable {
 public:
  /// Loads what most of them need.
  DecoderTable();

  /// The decoder of `format`, for which the module that holds it is loaded when need be; nullptr
  /// when there is none.
  Decode decoderOf(ImageFormat format);

 private:
  Decode videoDecoder();

  Decoders decoders_{};
  std::optional<Decode> videoDecoder_;  // once it was looked for
};

}  // namespace vt::worker
