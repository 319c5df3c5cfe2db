#include "metadata/query/AttributeSchema.h"

#include <array>
#include <optional>
#include <utility>

#include "metadata/query/TableLines.h"

namespace vt::query {

namespace {

constexpr std::size_t kColumns = 6;

std::optional<AttributeType> typeNamed(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, AttributeType>, 4> kTypes = {{
      {"string", AttributeType::kString},
      {"number", AttributeType::kNumber},
      {"date", AttributeType::kDate},
      {"boolean", AttributeType::kBoolean},
  }};
  for (const auto& [word, type] : kTypes) {
    if (word == name) return type;
  }
  return std::nullopt;
}

bool isFlag(std::string_view text) { return text == "0" || text == "1"; }

}  // namespace

Result<AttributeSchema, SchemaError> AttributeSchema::parse(std::string_view tsv) {
  AttributeSchema schema;
  for (const TableLine& line : tableLines(tsv)) {
    const auto failure = [&](std::string message) {
      return SchemaError{line.number, std::move(message)};
    };
    const std::vector<std::string_view>& columns = line.columns;
    if (columns.size() != kColumns) {
      return failure(std::to_string(columns.size()) + " columns instead of 6");
    }
    const std::optional<AttributeType> type = typeNamed(columns[1]);
    if (!type) return failure("unknown type " + std::string(columns[1]));
    if (!isFlag(columns[2]) || !isFlag(columns[5])) return failure("a flag is neither 0 nor 1");
    Attribute attribute;
    attribute.name = columns[0];
    attribute.type = *type;
    attribute.isMultiValued = columns[2] == "1";
    attribute.displayName = columns[3];
    if (!columns[4].empty()) {
      for (const std::string_view word : splitAt(columns[4], ',')) {
        attribute.shortNames.emplace_back(word);
      }
    }
    attribute.isSearchable = columns[5] == "1";
    if (attribute.name.empty()) return failure("an attribute without a name");
    if (attribute.isSearchable && *type != AttributeType::kString) {
      return failure(attribute.name + " is searchable but holds no text");
    }
    if (!schema.indexByName_.emplace(attribute.name, schema.attributes_.size()).second) {
      return failure(attribute.name + " stands here a second time");
    }
    schema.attributes_.push_back(std::move(attribute));
  }
  return schema;
}

const Attribute* AttributeSchema::find(std::string_view name) const {
  const auto found = indexByName_.find(name);
  return found == indexByName_.end() ? nullptr : &attributes_[found->second];
}

}  // namespace vt::query
