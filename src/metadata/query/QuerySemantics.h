#pragma once

#include <optional>
#include <string_view>

#include "foundation/Value.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"
#include "metadata/query/QueryError.h"

namespace vt::query {

/// The attributes that stand for several: `*` for all searchable ones, `**` for these and the text.
inline constexpr std::string_view kAnyAttribute = "*";
inline constexpr std::string_view kAnyAttributeOrText = "**";
inline constexpr std::string_view kTextContent = "kMDItemTextContent";

/// Why an operand cannot stand where it does.
struct SemanticProblem {
  QueryErrorKind kind;
  std::string_view expected;
};

/// Whether an attribute can be compared so. `attribute` is null for one that the schema does not
/// know: with that everything is allowed. `*` and `**` count as text.
std::optional<SemanticProblem> checkComparison(const AttributeSchema& schema,
                                               const Comparison& comparison);

/// Whether `bound` can be an end of a range over the attribute.
std::optional<SemanticProblem> checkBound(const AttributeSchema& schema, std::string_view attribute,
                                          const Operand& bound);

/// Whether the attribute can be ordered at all; the complaint is about the attribute.
std::optional<SemanticProblem> checkOrdering(const AttributeSchema& schema,
                                             std::string_view attribute);

/// The number that an operand is for a number attribute (quoted ones count), or 0 and 1 for the
/// words false and true if `allowsWords`.
std::optional<Value> numberOf(const Operand& operand, bool allowsWords);

}  // namespace vt::query
