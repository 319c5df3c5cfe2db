#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vt {

/// A file that stands for a web page is a property list with the page's address under "URL". What
/// is longer than this is none: a link takes some hundred bytes.
inline constexpr std::uint64_t kMostWebLinkBytes = std::uint64_t{1} << 20;

/// Whether the file at `path` stands for a web page: its extension is "webloc" or "webhistory", in
/// small letters.
bool isWebLinkPath(std::string_view path);

/// The address in the bytes of such a file, as it stands there: it may be of any scheme, or of
/// none. Nil unless they are a property list, in whatever format, whose root is a dictionary with a
/// text under "URL".
std::optional<std::string> webLinkInFile(std::string_view bytes);

}  // namespace vt
