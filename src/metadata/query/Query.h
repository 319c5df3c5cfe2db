#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "metadata/query/TimeValue.h"

namespace vt::query {

enum class Operator { kEqual, kNotEqual, kLess, kGreater, kLessOrEqual, kGreaterOrEqual };

/// The letters after a string or in brackets after the operator, as one bit each.
namespace modifier {
inline constexpr std::uint8_t kCase = 1;        ///< c: ignore case
inline constexpr std::uint8_t kDiacritics = 2;  ///< d: ignore diacritical marks
inline constexpr std::uint8_t kWords = 4;       ///< w: whole words anywhere in the value
inline constexpr std::uint8_t kTokens = 8;      ///< t: all words of the text, in any order
inline constexpr std::uint8_t kSaved = 16;      ///< s: no meaning to us, kept when printed
}  // namespace modifier

/// Text to compare with. `*` and `?` are wildcards; a backslash stands only before a `*`, `?` or
/// backslash that is meant literally.
struct TextOperand {
  std::string pattern;

  /// Whether it asks only that there is a value: `"*"`.
  bool isPresence() const { return pattern == "*"; }
  friend bool operator==(const TextOperand&, const TextOperand&) = default;
};

/// A number without quotes, to the letter, since a text attribute compares it as text.
struct NumberOperand {
  std::string literal;

  friend bool operator==(const NumberOperand&, const NumberOperand&) = default;
};

using Operand = std::variant<TextOperand, NumberOperand, TimeValue>;

/// `attribute operator value`.
struct Comparison {
  std::string attribute;
  Operator operation = Operator::kEqual;
  std::uint8_t modifiers = 0;
  Operand value;

  friend bool operator==(const Comparison&, const Comparison&) = default;
};

/// `InRange(attribute, low, high)`, both ends included.
struct Range {
  std::string attribute;
  Operand low;
  Operand high;

  friend bool operator==(const Range&, const Range&) = default;
};

using Term = std::variant<Comparison, Range>;

/// The attribute that the term asks of.
const std::string& attributeOf(const Term& term);
/// Whether the term is satisfied by what its value test is not: by `!=`.
bool isNegated(const Term& term);

enum class NodeKind : std::uint8_t { kTrue, kFalse, kTerm, kNot, kAnd, kOr };

inline constexpr std::uint32_t kNoNode = std::numeric_limits<std::uint32_t>::max();

/// A node of the tree. Children are a chain, so that trees of any depth and width are built, walked
/// and freed without recursion. An && never has an && as a child, nor an || an ||.
struct Node {
  NodeKind kind = NodeKind::kTrue;
  std::uint32_t term = 0;  ///< of kTerm: index into Query::terms()
  std::uint32_t parent = kNoNode;
  std::uint32_t firstChild = kNoNode;
  std::uint32_t lastChild = kNoNode;
  std::uint32_t nextSibling = kNoNode;
};

/// An attribute that the schema does not know: nothing has a value for it.
struct QueryWarning {
  std::string attribute;
  std::size_t offset = 0;  ///< in bytes, where it is first named

  friend bool operator==(const QueryWarning&, const QueryWarning&) = default;
};

/// A query that parsed: its tree, its text as typed, and what to warn of. Immutable.
class Query {
 public:
  /// Takes over what a parser built; the children of every node are in `nodes`.
  Query(std::string text, std::vector<Node> nodes, std::vector<Term> terms, std::uint32_t root,
        std::vector<QueryWarning> warnings);

  const std::string& text() const { return text_; }
  const std::vector<Node>& nodes() const { return nodes_; }
  const std::vector<Term>& terms() const { return terms_; }
  std::uint32_t root() const { return root_; }
  /// One for each unknown attribute, in the order of the text.
  const std::vector<QueryWarning>& warnings() const { return warnings_; }

  /// Whether both are the same tree; the texts as typed may differ.
  friend bool operator==(const Query& a, const Query& b);

 private:
  std::string text_;
  std::vector<Node> nodes_;
  std::vector<Term> terms_;
  std::uint32_t root_;
  std::vector<QueryWarning> warnings_;
};

}  // namespace vt::query
