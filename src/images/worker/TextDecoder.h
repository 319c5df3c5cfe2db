#pragma once

#include <optional>

#include "images/worker/Decoder.h"

namespace vt::worker {

/// Finds the fonts, so that no page has to. Takes next to no time once they are found.
void loadFonts();

/// The beginning of the text on a page of white paper. Nothing for an empty file.
std::optional<Image> decodeText(const DecodeJob& job);

}  // namespace vt::worker
