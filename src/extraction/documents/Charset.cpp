#include "extraction/documents/Charset.h"

#include <errno.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "metadata/live/TextDecoding.h"

namespace vt {
namespace {

/// A conversion into UTF-8, closed with this object.
class Conversion {
 public:
  explicit Conversion(const char* charset) : handle_(::iconv_open("UTF-8", charset)) {}
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;
  ~Conversion() {
    if (*this) ::iconv_close(handle_);
  }

  explicit operator bool() const {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): how iconv says so
    return handle_ != reinterpret_cast<iconv_t>(-1);
  }

  std::string convert(std::string_view bytes) const {
    std::string text;
    std::array<char, 8192> block;
    // iconv() does not write to what it reads.
    char* next = const_cast<char*>(bytes.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    std::size_t left = bytes.size();
    while (left > 0) {
      char* out = block.data();
      std::size_t room = block.size();
      const std::size_t result = ::iconv(handle_, &next, &left, &out, &room);
      text.append(block.data(), block.size() - room);
      if (result != static_cast<std::size_t>(-1) || errno == E2BIG) continue;
      if (errno != EILSEQ) break;  // cut within a character
      text += "\xEF\xBF\xBD";
      ++next;
      --left;
    }
    return text;
  }

 private:
  iconv_t handle_;
};

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
  const Conversion conversion(other == kOtherNames.end() ? name.c_str() : other->second);
  return conversion ? conversion.convert(bytes) : decodePlainText(bytes);
}

}  // namespace vt
