#pragma once

#include <array>
#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// The decoders that this build has. Drawings and text are part of the program; the libraries for
/// the rest take longer to load than all others, so each group is a module that is loaded with the
/// first file that needs it.
class DecoderTable {
 public:
  DecoderTable();

  /// The decoder of `format`, once what it needs is loaded; nullptr when there is none.
  Decode decoderOf(ImageFormat format);

 private:
  std::array<std::optional<Decode>, kImageFormats> decoders_;  // once each was looked for
};

}  // namespace vt::worker
