#include "extraction/documents/Charset.h"

#include <algorithm>
#include <array>
#include <utility>

#include "foundation/TextConversion.h"
#include "foundation/TextDecoding.h"

namespace vt {
namespace {

/// Names that browsers take for something else than they say, or that iconv does not know.
constexpr std::array<std::pair<std::string_view, const char*>, 11> kOtherNames = {{
    {"iso-8859-1", "WINDOWS-1252"},
    {"latin1", "WINDOWS-1252"},
    {"us-ascii", "WINDOWS-1252"},
    {"ascii", "WINDOWS-1252"},
    {"gb2312", "GBK"},
    {"x-gbk", "GBK"},
    {"x-sjis", "CP932"},
    {"shift_jis", "CP932"},
    {"ks_c_5601-1987", "UHC"},
    {"x-mac-roman", "MACINTOSH"},
    {"macroman", "MACINTOSH"},
}};

/// Lower case and without what no name has, such as the slashes by which iconv takes options.
std::string plainName(std::string_view charset) {
  std::string name;
  for (const char c : charset.substr(0, 64)) {
    if (c >= 'A' && c <= 'Z') {
      name += static_cast<char>(c - 'A' + 'a');
    } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_') {
      name += c;
    }
  }
  return name;
}

bool hasMark(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
         bytes.starts_with("\xEF\xBB\xBF");
}

}  // namespace

std::string decodedText(std::string_view bytes, std::string_view charset) {
  const std::string name = plainName(charset);
  if (name.empty() || name == "utf-8" || name == "utf8" || hasMark(bytes)) {
    return decodePlainText(bytes);
  }
  const auto* const other = std::ranges::find(kOtherNames, std::string_view(name),
                                              [](const auto& pair) { return pair.first; });
  const TextConversion conversion(other == kOtherNames.end() ? name.c_str() : other->second);
  return conversion ? conversion.convert(bytes) : decodePlainText(bytes);
}

}  // namespace vt
