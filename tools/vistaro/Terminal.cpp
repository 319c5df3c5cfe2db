#include "vistaro/Terminal.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "foundation/UTF8.h"

namespace vt::tool {

Terminal Terminal::standardOutput() {
  return Terminal(obeysEscapes(STDOUT_FILENO) && !std::getenv("NO_COLOR"));
}

bool Terminal::obeysEscapes(int descriptor) {
  const char* term = std::getenv("TERM");
  return term && std::string_view(term) != "dumb" && isatty(descriptor) == 1;
}

std::string Terminal::styled(std::string_view code, std::string_view text) const {
  return colours_ ? fmt::format("\x1b[{}m{}\x1b[0m", code, text) : std::string(text);
}

void printError(std::string_view text) {
  const std::string line = fmt::format("vistaro: {}\n", text);
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void showOnTerminal(std::string_view bytes) {
  // Standard error has no buffer.
  if (!bytes.empty()) std::fwrite(bytes.data(), 1, bytes.size(), stderr);
}

std::string printable(std::string_view bytes) {
  const std::string text = displayText(bytes);
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // C1 controls stand as C2 80 to C2 9F; some terminals obey them like escape sequences.
    const bool c1 =
        byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    if (byte < 0x20 || byte == 0x7F) {
      fmt::format_to(std::back_inserter(result), "\\x{:02x}", byte);
    } else if (c1) {
      fmt::format_to(std::back_inserter(result), "\\x{:02x}",
                     static_cast<unsigned char>(text[++i]));
    } else {
      result.push_back(text[i]);
    }
  }
  return result;
}

std::string padded(std::string text, std::size_t columns) {
  std::size_t codePoints = 0;
  for (const char c : text) codePoints += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  if (codePoints < columns) text.append(columns - codePoints, ' ');
  return text;
}

}  // namespace vt::tool
