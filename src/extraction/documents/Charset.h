#pragma once

#include <string>
#include <string_view>

namespace vt {

/// Text in the character set that its document names ("iso-8859-15", "Shift_JIS"), as UTF-8; what
/// is none in that set is replaced. A byte order mark goes before the name. Without a name, or with
/// one that nobody knows, it is taken as plain text is: UTF-8 when it is well formed, else what its
/// language tells.
std::string decodedText(std::string_view bytes, std::string_view charset);

}  // namespace vt
