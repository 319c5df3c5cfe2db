#pragma once

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "metadata/query/AttributeSchema.h"
#include "support/Places.h"

namespace vt {

/// The table of attributes that ships.
inline query::AttributeSchema shippedSchema() {
  std::ifstream file(resourcePath("attributes.tsv"), std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  Result<query::AttributeSchema, query::SchemaError> schema = query::AttributeSchema::parse(text);
  if (!schema) throw std::runtime_error("attributes.tsv: " + schema.error().message);
  return std::move(schema).value();
}

}  // namespace vt
