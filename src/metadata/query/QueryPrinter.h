#pragma once

#include <string>

#include "metadata/query/Query.h"

namespace vt::query {

/// The tree as text in one settled spelling: no parenthesis that the tree does not need, quotes
/// around text, modifiers after it. Parsing it gives an equal tree. When that text would be longer
/// than a query may be, a terser spelling which is never longer than the text first parsed.
std::string printQuery(const Query& query);

/// One term of it, in the same spelling.
std::string printTerm(const Term& term);

}  // namespace vt::query
