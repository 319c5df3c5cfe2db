#include "support/RandomPropertyList.h"

#include <bit>
#include <cmath>
#include <limits>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/UTF8.h"

namespace vt {

Value RandomPropertyList::tree() {
  auto root = Dictionary::make();
  for (int i = 0; i < 6; ++i) root->set(text(), value(4));
  return root;
}

Value RandomPropertyList::value(int depth) {
  const std::uint64_t choice = below(depth > 0 ? 4 : 2);
  if (choice < 2) return leaf();
  const std::uint64_t size = below(10) == 0 ? below(40) : below(5);
  if (choice == 2) {
    auto array = Array::make();
    for (std::uint64_t i = 0; i < size; ++i) array->append(value(depth - 1));
    return array;
  }
  auto dictionary = Dictionary::make();
  for (std::uint64_t i = 0; i < size; ++i) dictionary->set(text(), value(depth - 1));
  return dictionary;
}

Value RandomPropertyList::leaf() {
  switch (below(6)) {
    case 0:
      return below(2) == 0;
    case 1:
      return integer();
    case 2:
      return real();
    case 3: {
      // Whole seconds in the years 1 to 9999.
      constexpr std::int64_t kFirst = -62135596800;
      constexpr std::int64_t kEnd = 253402300800;
      const auto seconds =
          kFirst + static_cast<std::int64_t>(below(static_cast<std::uint64_t>(kEnd - kFirst)));
      return Date{std::chrono::seconds{seconds}};
    }
    case 4:
      return text();
    default: {
      std::vector<std::uint8_t> bytes(below(200));
      for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random_());
      return Data(std::move(bytes));
    }
  }
}

Value RandomPropertyList::integer() {
  const auto bits = below(64);
  const std::uint64_t magnitude = random_() >> bits;
  if (below(2) == 0) return magnitude;
  return static_cast<std::int64_t>(0 - magnitude);
}

double RandomPropertyList::real() {
  constexpr double kEdges[] = {0.0,
                               -0.0,
                               0.1,
                               std::numeric_limits<double>::max(),
                               std::numeric_limits<double>::denorm_min(),
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity()};
  if (below(4) == 0) return kEdges[below(std::size(kEdges))];
  const auto any = std::bit_cast<double>(random_());
  return std::isnan(any) ? 0.5 : any;
}

std::string RandomPropertyList::text() {
  constexpr char32_t kEdges[] = {'\t',   '\n',   '\r',   ' ',     '&',     '<',
                                 '>',    ']',    0x7F,   0x80,    0x7FF,   0x800,
                                 0xD7FF, 0xE000, 0xFFFD, 0x10000, 0x1F600, 0x10FFFF};
  std::string text;
  const std::uint64_t length = below(24);
  for (std::uint64_t i = 0; i < length; ++i) {
    appendCodePoint(text, below(3) == 0 ? kEdges[below(std::size(kEdges))]
                                        : static_cast<char32_t>('a' + below(26)));
  }
  return text;
}

}  // namespace vt
