#pragma once

#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/Result.h"
#include "metadata/query/AttributeSchema.h"

namespace vt::query {

/// What some attributes are called in one language.
class AttributeTranslation {
 public:
  /// The words of one attribute.
  struct Words {
    std::string displayName;
    std::vector<std::string> shortNames;  ///< may be empty
  };

  /// Reads a table such as `resources/attributes.de.tsv`: a heading line, then one attribute a line
  /// in the columns name, display name, short names separated by commas. `tsv` is UTF-8. Fails on a
  /// wrong number of columns, on an empty name or display name, and on a repeated name.
  static Result<AttributeTranslation, SchemaError> parse(std::string_view tsv);

  /// The words of the attribute called `name`; nullptr when it has no translation.
  const Words* find(std::string_view name) const;

  /// How many attributes are translated.
  std::size_t size() const { return words_.size(); }

 private:
  AttributeTranslation() = default;

  std::unordered_map<std::string, Words> words_;
};

/// `schema` as people of these languages, the most wanted one first, know it: each attribute takes
/// its display name from the first that has one, and keeps its English one where none has. Short
/// names of that language come first; the English ones stay behind them, so that a search kept in
/// English finds the same in every language. Translations of unknown attributes are passed over.
AttributeSchema translated(const AttributeSchema& schema,
                           std::span<const AttributeTranslation> languages);

}  // namespace vt::query
