#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "metadata/types/ContentTypes.h"
#include "support/Places.h"

namespace vt {

/// The type table that ships.
inline ContentTypes shippedTypes() {
  std::ifstream file(resourcePath("types.tsv"), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  Result<ContentTypes, ContentTypesError> types = ContentTypes::parse(text);
  if (!types) {
    throw std::runtime_error("types.tsv, line " + std::to_string(types.error().line) + ": " +
                             types.error().reason);
  }
  return std::move(types).value();
}

}  // namespace vt
