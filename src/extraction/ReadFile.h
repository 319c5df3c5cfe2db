#pragma once

#include <cstddef>
#include <string>

#include "foundation/Result.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The first bytes of the open file, at most `most`, wherever its descriptor stands.
Result<std::string, ExtractionFailure> readFileStart(int file, std::size_t most);

/// All of it. kTooLarge when that is more than `most` bytes.
Result<std::string, ExtractionFailure> readWholeFile(int file, std::size_t most);

}  // namespace vt
