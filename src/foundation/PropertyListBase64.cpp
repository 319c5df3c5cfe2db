#include "foundation/PropertyListBase64.h"

#include <array>

namespace vt {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::uint8_t kBlank = 0x40;
constexpr std::uint8_t kPadding = 0x41;
constexpr std::uint8_t kOther = 0x42;

constexpr std::array<std::uint8_t, 256> kMeaning = [] {
  std::array<std::uint8_t, 256> meaning{};
  meaning.fill(kOther);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    meaning[static_cast<unsigned char>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  for (const char c : {' ', '\t', '\r', '\n'}) meaning[static_cast<unsigned char>(c)] = kBlank;
  meaning['='] = kPadding;
  return meaning;
}();

}  // namespace

std::optional<Data> decodeBase64Strictly(std::string_view text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  std::uint32_t group = 0;
  int digits = 0;
  int padding = 0;
  for (const char c : text) {
    const std::uint8_t meaning = kMeaning[static_cast<unsigned char>(c)];
    if (meaning == kBlank) continue;
    if (meaning == kPadding) {
      if (digits < 2 || digits + padding == 4) return std::nullopt;
      ++padding;
      continue;
    }
    if (meaning == kOther || padding > 0) return std::nullopt;
    group = group << 6 | meaning;
    if (++digits < 4) continue;
    bytes.push_back(static_cast<std::uint8_t>(group >> 16));
    bytes.push_back(static_cast<std::uint8_t>(group >> 8));
    bytes.push_back(static_cast<std::uint8_t>(group));
    group = 0;
    digits = 0;
  }
  if (digits == 0 && padding == 0) return Data(std::move(bytes));
  if (digits + padding != 4) return std::nullopt;
  group <<= 6 * padding;
  if (group & ((1U << (8 * padding)) - 1)) return std::nullopt;
  bytes.push_back(static_cast<std::uint8_t>(group >> 16));
  if (padding == 1) bytes.push_back(static_cast<std::uint8_t>(group >> 8));
  return Data(std::move(bytes));
}

void appendBase64(std::string& text, std::span<const std::uint8_t> bytes) {
  const auto append = [&text](std::uint32_t group, int digits) {
    for (int i = 0; i < 4; ++i) {
      text.push_back(i < digits ? kDigits[group >> (18 - 6 * i) & 0x3F] : '=');
    }
  };
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    append(std::uint32_t{bytes[i]} << 16 | std::uint32_t{bytes[i + 1]} << 8 | bytes[i + 2], 4);
  }
  if (bytes.size() - i == 1) append(std::uint32_t{bytes[i]} << 16, 2);
  if (bytes.size() - i == 2) {
    append(std::uint32_t{bytes[i]} << 16 | std::uint32_t{bytes[i + 1]} << 8, 3);
  }
}

}  // namespace vt
