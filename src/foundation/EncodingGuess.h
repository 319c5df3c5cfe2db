#pragma once

#include <string_view>

namespace vt {

/// The character set that text is likely to be in which is neither UTF-8 nor Western European, by
/// the sequences that occur in languages: a name for TextConversion. nullptr when none is likely
/// enough, which short texts seldom are, and where ICU is not installed.
const char* guessedCharset(std::string_view bytes);

}  // namespace vt
