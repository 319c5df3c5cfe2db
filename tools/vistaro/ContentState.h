#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "metadata/catalogue/CatalogueReader.h"
#include "metadata/store/IndexFolder.h"

namespace vt::tool {

/// What there is to tell of the contents of an index.
struct ContentState {
  std::optional<CatalogueCounts> counts;  ///< nothing when there is no catalogue, or no reading it
  std::uint64_t pending = 0;              ///< files that are still to be looked into
  std::vector<ContentRecord> failures;    ///< the newest
  std::optional<StoreError> error;        ///< why there is nothing; kMissing before the first
};

/// Looks at the catalogue in `indexFolder`, of which `generation` is in force.
ContentState contentStateOf(const std::string& indexFolder, const IndexGeneration& generation);

}  // namespace vt::tool
