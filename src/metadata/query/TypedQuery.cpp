#include "metadata/query/TypedQuery.h"

#include <fmt/format.h>

#include <optional>
#include <utility>

#include "metadata/query/QueryParser.h"
#include "metadata/query/SearchTerms.h"
#include "metadata/query/TypedValue.h"

namespace vt::query {
namespace {

using Error = TypedQueryError;

constexpr std::string_view kKindAttribute = "kMDItemKind";

/// A condition, and whether it is a choice that needs parentheses beside others.
struct Condition {
  std::string text;
  bool isChoice = false;
};

Condition anyOf(const std::vector<std::string>& conditions) {
  return {fmt::format("{}", fmt::join(conditions, " || ")), conditions.size() > 1};
}

Error::Kind errorOf(AttributeType type) {
  switch (type) {
    case AttributeType::kNumber:
      return Error::Kind::kNumber;
    case AttributeType::kBoolean:
      return Error::Kind::kBoolean;
    default:
      return Error::Kind::kDate;
  }
}

/// The conditions of one search field.
class Translation {
 public:
  Translation(const AttributeSchema& schema, const TypedNames& names, WordsIn in)
      : schema_(schema), names_(names), in_(in) {}

  std::optional<Error> add(const SearchTerm& term) {
    std::vector<const Attribute*> attributes;
    if (!term.name.empty()) attributes = attributesCalled(term.name);
    if (attributes.empty()) {
      for (const std::string& word : term.words()) addWord(word);
      return std::nullopt;
    }
    std::vector<std::string> conditions;
    for (const Attribute* attribute : attributes) {
      if (auto condition = conditionForValue(*attribute, term.text)) {
        conditions.push_back(*std::move(condition));
      }
      if (attribute->name == kKindAttribute) addTypes(term.text, conditions);
    }
    if (conditions.empty()) {
      return Error{errorOf(attributes.front()->type), term.offset, term.text};
    }
    conditions_.push_back(anyOf(conditions));
    return std::nullopt;
  }

  Result<std::string, Error> query() const {
    if (conditions_.empty()) return Error{Error::Kind::kNothing, 0, {}};
    std::string query;
    for (const Condition& condition : conditions_) {
      if (!query.empty()) query += " && ";
      const bool needsParentheses = condition.isChoice && conditions_.size() > 1;
      query += needsParentheses ? "(" + condition.text + ")" : condition.text;
      if (query.size() > kMaximumQueryBytes) break;
    }
    if (query.size() > kMaximumQueryBytes || !parseQuery(query, schema_)) {
      return Error{Error::Kind::kTooLong, 0, {}};
    }
    return query;
  }

 private:
  std::vector<const Attribute*> attributesCalled(const std::string& shortName) const {
    std::vector<const Attribute*> known;
    for (const std::string& name : names_.attributes(shortName)) {
      if (const Attribute* attribute = schema_.find(name)) known.push_back(attribute);
    }
    return known;
  }

  void addWord(const std::string& word) {
    conditions_.push_back({conditionForWord(word, in_), in_ == WordsIn::kNamesAndText});
  }

  void addTypes(const std::string& word, std::vector<std::string>& conditions) const {
    for (const std::string& type : names_.typesOfKind(word)) {
      conditions.push_back(fmt::format("kMDItemContentTypeTree == \"{}\"", escapedPattern(type)));
    }
  }

  const AttributeSchema& schema_;
  const TypedNames& names_;
  WordsIn in_;
  std::vector<Condition> conditions_;
};

}  // namespace

Result<std::string, TypedQueryError> queryFromTyped(std::string_view typed,
                                                    const AttributeSchema& schema,
                                                    const TypedNames& names, WordsIn in) {
  if (looksLikeQuery(typed)) return std::string(typed);
  Translation translation(schema, names, in);
  for (const SearchTerm& term : searchTermsIn(typed)) {
    if (auto error = translation.add(term)) return *std::move(error);
  }
  return translation.query();
}

}  // namespace vt::query
