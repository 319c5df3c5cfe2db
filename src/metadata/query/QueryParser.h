#pragma once

#include <cstddef>
#include <string_view>

#include "foundation/Result.h"
#include "metadata/query/AttributeSchema.h"
#include "metadata/query/Query.h"
#include "metadata/query/QueryError.h"

namespace vt::query {

inline constexpr std::size_t kMaximumQueryBytes = 65536;
inline constexpr std::size_t kMaximumNesting = 256;  ///< parentheses and `!` together
inline constexpr std::size_t kMaximumTerms = 4096;
inline constexpr std::size_t kMaximumWildcards = 64;  ///< in one string

/// Parses a query of the language that docs/query-language.md describes. Nothing is skipped or
/// repaired: the first thing that is wrong is the error. Takes time linear in the text.
Result<Query, QueryError> parseQuery(std::string_view text, const AttributeSchema& schema);

}  // namespace vt::query
