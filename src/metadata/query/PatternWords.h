#pragma once

#include <vector>

#include "metadata/query/TextPattern.h"

namespace vt::query {

/// A word of a pattern: characters and wildcards without a separator.
using PatternWord = std::vector<PatternCharacter>;

/// The words of a pattern, parted at separators. A word of nothing but `*` and marks asks for
/// nothing and is left out.
std::vector<PatternWord> patternWords(const std::vector<PatternCharacter>& pattern);

}  // namespace vt::query
