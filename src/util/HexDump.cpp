#include "util/HexDump.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <string_view>

#include "util/CryptoLibrary.h"

namespace vt {
namespace {

using BioChain = std::unique_ptr<BIO, OpenSSLRelease<&OpenSSL::BIO_free_all>>;

constexpr std::size_t kLongestLine = 1023;  // of a longer one the filter silently drops the head
constexpr std::size_t kBytesInLine = 16;
constexpr std::size_t kChunk = 512;

/// The Base64 filter over `end`, which it takes over.
BioChain filterOver(BIO* end, bool newlines) {
  BIO* filter = openssl().BIO_new(openssl().BIO_f_base64());
  if (!newlines) openssl().BIO_set_flags(filter, BIO_FLAGS_BASE64_NO_NL);
  return BioChain(openssl().BIO_push(filter, end));
}

bool hasOverlongLine(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end > kLongestLine) return true;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return false;
}

bool isAsciiLetterOrDigit(std::uint8_t byte) {
  return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z');
}

}  // namespace

std::string encodeBase64(const Data& bytes) {
  return encodeBase64WithNewlines(bytes, /*newlines=*/true);
}

std::string encodeBase64WithNewlines(const Data& bytes, bool newlines) {
  const OpenSSLErrorsKept errors;
  BIO* const sink = openssl().BIO_new(openssl().BIO_s_mem());
  const BioChain chain = filterOver(sink, newlines);
  for (std::size_t written = 0; written < bytes.size();) {
    std::size_t taken = 0;
    const std::size_t left = bytes.size() - written;
    if (openssl().BIO_write_ex(chain.get(), bytes.bytes().data() + written, left, &taken) != 1)
      break;
    written += taken;
  }
  static_cast<void>(openssl().BIO_ctrl(chain.get(), BIO_CTRL_FLUSH, 0, nullptr));
  char* text = nullptr;
  const long length = openssl().BIO_ctrl(sink, BIO_CTRL_INFO, 0, static_cast<void*>(&text));
  return length > 0 ? std::string(text, static_cast<std::size_t>(length)) : std::string();
}

Data decodeBase64(const Data& text) { return decodeBase64WithNewLines(text, /*newLines=*/true); }

Data decodeBase64WithNewLines(const Data& text, bool newLines) {
  const std::string_view characters(reinterpret_cast<const char*>(text.bytes().data()),
                                    text.size());
  if (newLines && hasOverlongLine(characters)) return {};
  if (text.empty() || text.size() > std::numeric_limits<int>::max()) return {};
  const OpenSSLErrorsKept errors;
  const BioChain chain = filterOver(
      openssl().BIO_new_mem_buf(text.bytes().data(), static_cast<int>(text.size())), newLines);
  std::vector<std::uint8_t> bytes;
  std::array<std::uint8_t, kChunk> chunk{};
  std::size_t length = 0;
  while (openssl().BIO_read_ex(chain.get(), chunk.data(), chunk.size(), &length) == 1 &&
         length > 0) {
    bytes.insert(bytes.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(length));
  }
  return Data(std::move(bytes));
}

std::string hexval(const Data& bytes) {
  std::string text;
  text.reserve(2 * bytes.size());
  for (const std::uint8_t byte : bytes.bytes())
    fmt::format_to(std::back_inserter(text), "{:02x}", byte);
  return text;
}

std::string hexdump(const Data& bytes) {
  std::string result;
  result.reserve(2 * bytes.size());
  std::string address;
  std::string hex;
  std::string characters;
  const auto writeLine = [&] {
    fmt::format_to(std::back_inserter(result), "[{:>4.4}]   {:<50.50}  {}\n", address, hex,
                   characters);
    hex.clear();
    characters.clear();
  };
  const auto object = reinterpret_cast<std::uintptr_t>(&bytes);
  std::size_t n = 0;
  for (const std::uint8_t& byte : bytes.bytes()) {
    if (n++ % kBytesInLine == 0) {
      const auto distance = reinterpret_cast<std::uintptr_t>(&byte) - object;
      address = fmt::format("{:04x}", static_cast<std::uint32_t>(distance));
    }
    fmt::format_to(std::back_inserter(hex), "{:02X} ", byte);
    characters += isAsciiLetterOrDigit(byte) ? static_cast<char>(byte) : '.';
    if (n % kBytesInLine == 0) {
      writeLine();
    } else if (n % (kBytesInLine / 2) == 0) {
      hex += "  ";
      characters += ' ';
    }
  }
  if (!hex.empty()) writeLine();
  return result;
}

}  // namespace vt
