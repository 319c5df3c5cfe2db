#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/extract/Extractor.h"

namespace vt {

/// What is known of an extractor that runs in another process.
struct ExtractorDescription {
  std::string name;
  std::uint32_t version = 0;
  std::vector<bool> types;  ///< whether it takes each type of the table

  bool operator==(const ExtractorDescription&) const = default;
};

/// The bytes in which a worker describes its extractors, which take types of a table with
/// `typeCount` of them.
std::string descriptionBytes(std::span<const std::unique_ptr<Extractor>> extractors,
                             std::size_t typeCount);

/// What the bytes describe; nothing when they are no descriptions, or of another table.
std::optional<std::vector<ExtractorDescription>> descriptionsIn(std::string_view bytes,
                                                                std::size_t typeCount);

}  // namespace vt
