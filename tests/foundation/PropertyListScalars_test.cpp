#include "foundation/PropertyListScalars.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

#include "foundation/PropertyListBase64.h"

namespace vt {
namespace {

TEST(PropertyListScalars, ReadBackEveryBitOfAReal) {
  constexpr std::uint64_t kSeed = 11;
  SCOPED_TRACE(testing::Message() << "seed " << kSeed);
  std::mt19937_64 random(kSeed);
  for (int i = 0; i < 20'000; ++i) {
    const auto real = std::bit_cast<double>(random());
    std::string text;
    appendPropertyListReal(text, real);
    const std::optional<double> again = parsePropertyListReal(text);
    ASSERT_TRUE(again) << text;
    ASSERT_TRUE(std::isnan(real)
                    ? std::isnan(*again)
                    : std::bit_cast<std::uint64_t>(*again) == std::bit_cast<std::uint64_t>(real))
        << text;
  }
}

TEST(PropertyListScalars, ReadBackEveryDayOfSomeCenturies) {
  using namespace std::chrono;
  for (sys_days day = 1599y / 1 / 1; day < sys_days{2101y / 1 / 1}; day += days{1}) {
    std::string text;
    ASSERT_TRUE(appendPropertyListDate(text, day + 23h + 59min + 59s));
    ASSERT_EQ(parsePropertyListDate(text), Date{day + 23h + 59min + 59s}) << text;
  }
}

TEST(PropertyListBase64, DecodesWhatItEncodes) {
  std::vector<std::uint8_t> bytes;
  for (int size = 0; size < 300; ++size) {
    std::string text;
    appendBase64(text, bytes);
    ASSERT_EQ(text.size(), (bytes.size() + 2) / 3 * 4);
    ASSERT_EQ(decodeBase64Strictly(text), Data(bytes));
    bytes.push_back(static_cast<std::uint8_t>(size * 7));
  }
}

TEST(PropertyListBase64, RefusesWhatIsNotExactlyTheEncoding) {
  struct Case {
    const char* text;
    bool valid;
  };
  const Case cases[] = {
      {"", true},         {" \t\r\n", true}, {"AA==", true},  {"A A\n=\t=", true},
      {"AAA=", true},     {"AAAA", true},    {"+/+/", true},  {"A", false},
      {"AA", false},      {"AAA", false},    {"A===", false}, {"AA=", false},
      {"AA===", false},   {"AAAA=", false},  {"=", false},    {"AA==AA==", false},
      {"AB==", false},    {"AAB=", false},   {"AA=A", false}, {"-_-_", false},
      {"AA\x80=", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(decodeBase64Strictly(c.text).has_value(), c.valid);
  }
}

}  // namespace
}  // namespace vt
