#pragma once

#include <cstdint>
#include <optional>

namespace vt {

/// The code point that a byte stands for in the NeXTSTEP character set, which octal escapes of
/// old-style property lists are written in. Nothing for 0xFE and 0xFF, which stand for none.
std::optional<char32_t> codePointFromNextStep(std::uint8_t byte);

}  // namespace vt
