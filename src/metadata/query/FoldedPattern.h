#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vt::query {

/// What a text operand says of the values that match it once they are folded by case and marks, as
/// an index may keep them. Whatever the operand's own modifiers, no value matches whose folded text
/// lacks `literal`.
struct FoldedPattern {
  std::string literal;  ///< folded likewise; "" when nothing is required
  bool isOpenAtStart = true;
  bool isOpenAtEnd = true;
  /// Whether a value matches exactly when its folded text holds `literal`: at its start unless open
  /// there, and at its end unless open there. Else TextMatcher has to tell.
  bool decides = false;

  /// Whether the folded text holds the literal where it must be.
  bool admits(std::string_view folded) const;
};

/// Of a TextOperand::pattern that is compared with a value.
FoldedPattern foldedPatternOf(std::string_view pattern, std::uint8_t modifiers);

}  // namespace vt::query
