#pragma once

#include <string>
#include <string_view>

namespace vt {

/// The text of a plain-text file, as UTF-8. A byte order mark tells UTF-16 and UTF-32, and is left
/// out. Without one, bytes that are well formed UTF-8 are that, unless zeros among them show them
/// to be UTF-16 or UTF-32, or escapes to be one of ISO 2022. What is left is in the character set
/// that the language tells, mostly Windows-1252, which has all of Latin-1. A character that the end
/// cuts short is left out, since `bytes` may be the start of a longer file.
std::string decodePlainText(std::string_view bytes);

}  // namespace vt
