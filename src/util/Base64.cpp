#include "util/Base64.h"

#include <array>
#include <cstdint>
#include <string_view>

#include "foundation/PropertyListBase64.h"
#include "foundation/VTObject.h"

namespace vt {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kInvalid = 127;

constexpr std::array<std::uint8_t, 256> kDecodingTable = [] {
  std::array<std::uint8_t, 256> table{};
  table.fill(kInvalid);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return table;
}();

constexpr bool isPassedOver(char c) { return c == ' ' || (c >= '\t' && c <= '\r') || c == '='; }

}  // namespace

std::optional<Data> dataWithBase64EncodedString(const std::optional<std::string>& text) {
  if (!text) throw InvalidArgumentError("");
  std::vector<std::uint8_t> bytes;
  bytes.reserve((text->size() + 3) / 4 * 3);
  std::array<std::uint8_t, 4> group{};
  std::size_t collected = 0;
  const auto writeGroup = [&] {
    const auto [a, b, c, d] = group;
    bytes.push_back(static_cast<std::uint8_t>(a << 2 | b >> 4));
    if (collected > 2) bytes.push_back(static_cast<std::uint8_t>(b << 4 | c >> 2));
    if (collected > 3) bytes.push_back(static_cast<std::uint8_t>(c << 6 | d));
    collected = 0;
  };
  for (const char character : *text) {
    if (isPassedOver(character)) continue;
    const std::uint8_t value = kDecodingTable[static_cast<unsigned char>(character)];
    if (value == kInvalid) return std::nullopt;
    group[collected++] = value;
    if (collected == group.size()) writeGroup();
  }
  if (collected == 1) return std::nullopt;
  if (collected > 1) writeGroup();
  return Data(std::move(bytes));
}

std::string base64Encoding(const Data& bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  appendBase64(text, bytes.bytes());
  return text;
}

}  // namespace vt
