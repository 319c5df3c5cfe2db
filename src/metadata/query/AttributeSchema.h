#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/Result.h"

namespace vt::query {

enum class AttributeType { kString, kNumber, kDate, kBoolean };

/// One attribute that files can have.
struct Attribute {
  std::string name;  ///< as queries write it: "kMDItemAuthors"
  AttributeType type = AttributeType::kString;
  bool isMultiValued = false;           ///< its value is an array
  std::string displayName;              ///< for people, English unless translated: "Authors"
  std::vector<std::string> shortNames;  ///< words for simple search fields: "author", "by"
  bool isSearchable = false;            ///< `*` looks at it; only ever a string attribute
};

/// What is wrong with a table of attributes, and where.
struct SchemaError {
  std::size_t line = 0;  ///< 1 is the first
  std::string message;
};

class AttributeTranslation;

/// The attributes that queries may name and what is known of each. Immutable, so it may be shared
/// between threads.
class AttributeSchema {
 public:
  /// Reads the table of `resources/attributes.tsv`: a heading line, then one attribute a line in
  /// the columns name, type (string, number, date, boolean), multi (0 or 1), English name, short
  /// names separated by commas, searchable (0 or 1). `tsv` is UTF-8. Fails on a wrong number of
  /// columns, an unknown type or flag, an empty or repeated name, and on a searchable attribute
  /// that holds no text.
  static Result<AttributeSchema, SchemaError> parse(std::string_view tsv);

  /// The attribute called `name`, to the letter; nullptr when there is none.
  const Attribute* find(std::string_view name) const;

  /// In the order of the table.
  const std::vector<Attribute>& attributes() const { return attributes_; }

 private:
  friend AttributeSchema translated(const AttributeSchema& schema,
                                    std::span<const AttributeTranslation> languages);

  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>{}(text);
    }
  };

  AttributeSchema() = default;

  std::vector<Attribute> attributes_;
  std::unordered_map<std::string, std::size_t, Hash, std::equal_to<>> indexByName_;
};

}  // namespace vt::query
