#pragma once

#include <cstdint>

#include "foundation/Result.h"
#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/store/IndexFolder.h"

namespace vt {

/// How a catalogue and a generation agree.
struct ContentsVerdict {
  std::uint64_t lookedInto = 0;  ///< rows whose content the catalogue has
  std::uint64_t pending = 0;     ///< rows that are still to be looked into
  std::uint64_t withoutRow = 0;  ///< contents that no row has: of files that went since
};

/// Reads all of the catalogue, for what contradicts itself, and compares it with what the index
/// holds, in both directions. kMissing when it says nothing of a segment; kDamaged when it is not
/// sound, or a row has a content that is not there.
Result<ContentsVerdict, StoreError> verifyContents(const IndexGeneration& generation,
                                                   CatalogueReader& catalogue);

}  // namespace vt
