#pragma once

#include <string>
#include <string_view>

namespace vt {

/// The text of a plain-text file, as UTF-8. A byte order mark tells UTF-16 and is left out; without
/// one the bytes are UTF-8 when they are well formed, else Latin-1. A character that the end cuts
/// short is left out, since `bytes` may be the start of a longer file.
std::string decodePlainText(std::string_view bytes);

}  // namespace vt
