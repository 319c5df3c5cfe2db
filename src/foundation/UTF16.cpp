#include "foundation/UTF16.h"

#include "foundation/UTF8.h"

namespace vt {

UTF16Decoding decodeUTF16(std::string_view bytes, ByteOrder order) {
  const auto unitAt = [&](std::size_t i) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    return order == ByteOrder::kBigEndian ? char32_t{first} << 8 | second
                                          : char32_t{second} << 8 | first;
  };
  UTF16Decoding decoding;
  decoding.text.reserve(bytes.size() / 2);
  std::size_t i = 0;
  while (i + 1 < bytes.size()) {
    const char32_t unit = unitAt(i);
    if (unit < 0xD800 || unit > 0xDFFF) {
      appendCodePoint(decoding.text, unit);
      i += 2;
      continue;
    }
    const char32_t next = i + 3 < bytes.size() ? unitAt(i + 2) : 0;
    if (unit > 0xDBFF || next < 0xDC00 || next > 0xDFFF) break;
    appendCodePoint(decoding.text, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
    i += 4;
  }
  if (i != bytes.size()) decoding.errorOffset = i;
  return decoding;
}

}  // namespace vt
