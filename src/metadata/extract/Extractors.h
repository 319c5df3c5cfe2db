#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/types/ContentTypes.h"

namespace vt {

/// The extractors of an indexer, the first of those that take a type being the one for it.
class Extractors {
 public:
  Extractors(const ContentTypes& types, std::vector<std::unique_ptr<Extractor>> extractors);

  /// The one for regular files of the type; nullptr when none looks into them.
  Extractor* forType(ContentTypeId type) const { return byType_[type]; }

 private:
  std::vector<std::unique_ptr<Extractor>> extractors_;
  std::vector<Extractor*> byType_;
};

/// Those that this program has.
Extractors builtInExtractors(const ContentTypes& types);

}  // namespace vt
