#include "metadata/query/AttributeTranslation.h"

#include <algorithm>
#include <utility>

#include "metadata/query/TableLines.h"

namespace vt::query {
namespace {

constexpr std::size_t kColumns = 3;

void translate(Attribute& attribute, const AttributeTranslation::Words& words) {
  attribute.displayName = words.displayName;
  const std::vector<std::string> english =
      std::exchange(attribute.shortNames, std::vector<std::string>(words.shortNames));
  for (const std::string& word : english) {
    if (std::ranges::find(attribute.shortNames, word) == attribute.shortNames.end()) {
      attribute.shortNames.push_back(word);
    }
  }
}

}  // namespace

Result<AttributeTranslation, SchemaError> AttributeTranslation::parse(std::string_view tsv) {
  AttributeTranslation translation;
  for (const TableLine& line : tableLines(tsv)) {
    const std::vector<std::string_view>& columns = line.columns;
    if (columns.size() != kColumns) {
      return SchemaError{line.number, std::to_string(columns.size()) + " columns instead of 3"};
    }
    const std::string name(columns[0]);
    if (name.empty()) return SchemaError{line.number, "an attribute without a name"};
    if (columns[1].empty()) return SchemaError{line.number, name + " has no display name"};
    Words words{std::string(columns[1]), {}};
    if (!columns[2].empty()) {
      for (const std::string_view word : splitAt(columns[2], ',')) {
        words.shortNames.emplace_back(word);
      }
    }
    if (!translation.words_.emplace(name, std::move(words)).second) {
      return SchemaError{line.number, name + " stands here a second time"};
    }
  }
  return translation;
}

const AttributeTranslation::Words* AttributeTranslation::find(std::string_view name) const {
  const auto found = words_.find(std::string(name));
  return found == words_.end() ? nullptr : &found->second;
}

AttributeSchema translated(const AttributeSchema& schema,
                           std::span<const AttributeTranslation> languages) {
  AttributeSchema result = schema;
  for (Attribute& attribute : result.attributes_) {
    for (const AttributeTranslation& language : languages) {
      const AttributeTranslation::Words* words = language.find(attribute.name);
      if (!words) continue;
      translate(attribute, *words);
      break;
    }
  }
  return result;
}

}  // namespace vt::query
