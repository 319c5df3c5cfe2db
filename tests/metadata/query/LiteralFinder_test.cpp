#include "metadata/query/LiteralFinder.h"

#include <gmock/gmock.h>

namespace vt::query {

namespace {

std::vector<std::size_t> occurrences(const std::string& needle, std::string_view text) {
  std::vector<std::size_t> found;
  LiteralFinder(needle).forEach(text, [&](std::size_t at) {
    found.push_back(at);
    return false;
  });
  return found;
}

std::vector<std::size_t> occurrencesBySearch(const std::string& needle, std::string_view text) {
  std::vector<std::size_t> found;
  for (std::size_t at = text.find(needle); at != std::string_view::npos;
       at = text.find(needle, at + 1)) {
    found.push_back(at);
  }
  return found;
}

}  // namespace

TEST(LiteralFinder, FindsOverlappingOccurrences) {
  EXPECT_THAT(occurrences("aa", "aaaa"), testing::ElementsAre(0, 1, 2));
  EXPECT_THAT(occurrences("aba", "ababa"), testing::ElementsAre(0, 2));
  EXPECT_THAT(occurrences("a", "bab"), testing::ElementsAre(1));
  EXPECT_THAT(occurrences("abc", "ab"), testing::IsEmpty());
}

TEST(LiteralFinder, AgreesWithPlainSearchOnAllSmallTexts) {
  // All needles of up to 4 letters in all texts of 9, over an alphabet of two.
  for (unsigned length = 1; length <= 4; ++length) {
    for (unsigned n = 0; n < (1U << length); ++n) {
      std::string needle;
      for (unsigned i = 0; i < length; ++i) needle += ((n >> i) & 1U) != 0 ? 'b' : 'a';
      for (unsigned t = 0; t < (1U << 9); ++t) {
        std::string text;
        for (unsigned i = 0; i < 9; ++i) text += ((t >> i) & 1U) != 0 ? 'b' : 'a';
        ASSERT_EQ(occurrences(needle, text), occurrencesBySearch(needle, text))
            << needle << " in " << text;
      }
    }
  }
}

TEST(LiteralFinder, StopsWhenToldTo) {
  int calls = 0;
  EXPECT_TRUE(LiteralFinder("a").forEach("aaa", [&](std::size_t) { return ++calls == 2; }));
  EXPECT_EQ(calls, 2);
}

TEST(LiteralFinder, NeedsNoTimeForTextsMadeToBeSlow) {
  // Comparing at every place would take 2.5 * 10^13 steps.
  const std::string needle = std::string(5'000'000, 'a') + "b";
  EXPECT_FALSE(LiteralFinder(needle).isIn(std::string(10'000'000, 'a')));
}

}  // namespace vt::query
