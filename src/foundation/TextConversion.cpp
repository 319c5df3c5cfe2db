#include "foundation/TextConversion.h"

#include <errno.h>

#include <array>
#include <cstddef>

#include "foundation/UTF8.h"

namespace vt {

TextConversion::TextConversion(const char* charset) : handle_(::iconv_open("UTF-8", charset)) {}

TextConversion::~TextConversion() {
  if (*this) ::iconv_close(handle_);
}

TextConversion::operator bool() const {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): how iconv says so
  return handle_ != reinterpret_cast<iconv_t>(-1);
}

std::string TextConversion::convert(std::string_view bytes) const {
  // What the text before has left behind: sets that characters are shifted to, or a cut one.
  ::iconv(handle_, nullptr, nullptr, nullptr, nullptr);
  std::string text;
  std::array<char, 8192> block;
  // iconv() does not write to what it reads.
  char* next = const_cast<char*>(bytes.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
  std::size_t left = bytes.size();
  while (left > 0) {
    char* out = block.data();
    std::size_t room = block.size();
    const std::size_t result = ::iconv(handle_, &next, &left, &out, &room);
    const int error = errno;
    text.append(block.data(), block.size() - room);
    if (result != static_cast<std::size_t>(-1) || error == E2BIG) continue;
    if (error != EILSEQ) break;  // cut within a character
    appendCodePoint(text, kReplacementCharacter);
    ++next;
    --left;
  }
  // A last letter is held back where a mark may follow it.
  char* out = block.data();
  std::size_t room = block.size();
  ::iconv(handle_, nullptr, nullptr, &out, &room);
  return text.append(block.data(), block.size() - room);
}

}  // namespace vt
