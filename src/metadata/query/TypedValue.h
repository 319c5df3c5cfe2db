#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "metadata/query/AttributeSchema.h"

namespace vt::query {

/// The condition that people mean by `attribute:typed`, in parentheses where it is not a single
/// comparison. None when `typed` is no value of the attribute's type.
///
/// | type | what is understood |
/// |---|---|
/// | string | text that the value contains, case and marks ignored; `*` for any value |
/// | number | `12`, `1.5`; for sizes with kb, mb, gb, tb (thousands), then about that much |
/// | date | a day, month or year as `2024-03-31`, `2024-03`, `2024`; today, yesterday, tomorrow;
/// week, month, year, also with this, last or next before them ("last-week"); `7d` for the last
/// seven days. The German words too | | boolean | yes, no, true, false, 1, 0, ja, nein |
///
/// Before a number or date may stand `>`, `>=`, `<` or `<=`, or two of them with `..` between;
/// either may then be missing.
std::optional<std::string> conditionForValue(const Attribute& attribute, std::string_view typed);

}  // namespace vt::query
