#include "foundation/PropertyListError.h"

#include <fmt/format.h>

#include <algorithm>

#include "foundation/UTF8.h"

namespace vt {

std::string PropertyListError::description() const {
  return line != 0 ? fmt::format("line {}, byte {}: {}", line, offset, text)
                   : fmt::format("byte {}: {}", offset, text);
}

PropertyListError tooManyBytes(std::size_t size, std::size_t limit) {
  return {PropertyListErrorKind::kTooLarge, limit, 0,
          fmt::format("{} bytes; at most {}", size, limit)};
}

std::size_t lineAtOffset(std::string_view bytes, std::size_t offset) {
  std::size_t line = 1;
  const std::size_t end = std::min(offset, bytes.size());
  for (std::size_t i = 0; i < end; ++i) {
    if (bytes[i] == '\n' || (bytes[i] == '\r' && (i + 1 == bytes.size() || bytes[i + 1] != '\n'))) {
      ++line;
    }
  }
  return line;
}

std::string quotedPiece(std::string_view piece) {
  constexpr std::size_t kLongest = 40;
  const bool cut = piece.size() > kLongest;
  std::string quoted = "\"";
  for (const char c : displayText(piece.substr(0, kLongest))) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) {
      quoted += fmt::format("\\x{:02x}", byte);
    } else {
      quoted.push_back(c);
    }
  }
  return quoted + (cut ? "\"…" : "\"");
}

}  // namespace vt
