#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
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
  /// The one of that name and version; nullptr when there is none.
  const Extractor* named(std::string_view name, std::uint32_t version) const;

 private:
  std::vector<std::unique_ptr<Extractor>> extractors_;
  std::vector<Extractor*> byType_;
};

/// Those that this program has.
Extractors builtInExtractors(const ContentTypes& types);

}  // namespace vt
