#pragma once

#include <string>
#include <string_view>

namespace vt {

/// `lowercaseString`
/// The whole text, UTF-8, in lower case, the same in every language.
std::string lowercaseString(std::string_view text);

/// The text, UTF-8, with its first character in upper case and the rest as it is. One character can
/// become two: "ß" becomes "SS".
std::string withFirstCharacterInUpperCase(std::string_view text);

}  // namespace vt
