#include "foundation/Value.h"

#include <gtest/gtest.h>

#include <limits>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

TEST(Value, ReadsTextAsTheBooleanThatItSpells) {
  struct Case {
    const char* text;
    bool reading;
  };
  const Case cases[] = {
      {"1", true},   {"YES", true}, {"true", true}, {" +01", true}, {"none", false},
      {"NO", false}, {"0", false},  {"", false},    {"-", false},   {"000", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Value(c.text).boolValue(), c.reading);
  }
}

TEST(Value, ReadsTextAsTheIntegerAtItsStart) {
  struct Case {
    const char* text;
    std::int64_t reading;
  };
  const Case cases[] = {
      {"2525", 2525},
      {" -7 apples", -7},
      {"+3", 3},
      {"none", 0},
      {"", 0},
      {"+-3", 0},
      {"99999999999999999999", std::numeric_limits<std::int64_t>::max()},
      {"-99999999999999999999", std::numeric_limits<std::int64_t>::min()},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Value(c.text).integerValue(), c.reading);
  }
}

TEST(Value, ClampsRealsThatNoIntegerHolds) {
  EXPECT_EQ(Value(1e300).integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Value(-1e300).integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).integerValue(), 0);
  EXPECT_EQ(Value(1e19).unsignedIntegerValue(), 10000000000000000000ULL);
}

TEST(Value, EqualsNumbersOfOtherKindsThatStandForTheSame) {
  EXPECT_EQ(Value(true), Value(1));
  EXPECT_EQ(Value(1U), Value(1.0));
  EXPECT_FALSE(Value(-1) == Value(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_FALSE(Value("1") == Value(1));
}

TEST(Value, OrdersLargeIntegersExactly) {
  constexpr std::uint64_t kTwoTo63 = 1ULL << 63;
  EXPECT_EQ(compareNaturally(Value(kTwoTo63 - 1), Value(kTwoTo63)), -1);
  EXPECT_EQ(compareNaturally(Value(kTwoTo63), Value(std::numeric_limits<std::int64_t>::max())), 1);
  EXPECT_EQ(compareNaturally(Value(-1), Value(kTwoTo63)), -1);
}

TEST(Value, OrdersIntegersAndRealsInOneOrder) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr std::int64_t kTwoTo53 = 1LL << 53;
  const Value ascending[] = {kNaN,
                             -kInfinity,
                             -1e300,
                             std::numeric_limits<std::int64_t>::min(),
                             -2,
                             -1.5,
                             -1,
                             -0.5,
                             0U,
                             0.5,
                             1,
                             kTwoTo53,
                             kTwoTo53 + 1,  // as a double it would equal the one before
                             9007199254740994.0,
                             std::numeric_limits<std::int64_t>::max(),
                             9223372036854775808.0,
                             (1ULL << 63) + 1,
                             std::numeric_limits<std::uint64_t>::max(),
                             18446744073709551616.0,
                             kInfinity};
  for (std::size_t i = 0; i < std::size(ascending); ++i) {
    for (std::size_t j = 0; j < std::size(ascending); ++j) {
      SCOPED_TRACE(testing::Message() << i << " to " << j);
      EXPECT_EQ(compareNaturally(ascending[i], ascending[j]), i < j ? -1 : i > j ? 1 : 0);
    }
  }
}

TEST(Value, ReadsTextAsTheRealAtItsStart) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  struct Case {
    const char* text;
    double reading;
  };
  const Case cases[] = {
      {" 1.5 apples", 1.5}, {"-.5", -0.5},          {"+2", 2},       {"+-3", 0},
      {"--3", 0},           {"nancy", 0},           {"infinity", 0}, {"", 0},
      {"1e999", kInfinity}, {"-1e999", -kInfinity}, {"1e-999", 0},   {"1e", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Value(c.text).doubleValue(), c.reading);
  }
}

TEST(Value, OrdersTextByCodePointAndUnlikeTypesByRank) {
  EXPECT_EQ(compareNaturally(Value("Z"), Value("a")), -1);
  EXPECT_EQ(compareNaturally(Value("\xEF\xBF\xBD"), Value("\xF0\x9F\x98\x80")), -1);
  EXPECT_EQ(compareNaturally(Value(5), Value("1")), -1);
  EXPECT_EQ(compareNaturally(Value(5.5), Value(true)), 1);
}

TEST(Value, SharesContainersAndKeepsOrderOfKeys) {
  const auto inner = Array::make({1, 2});
  const auto outer = Dictionary::make({{"b", inner}, {"a", "x"}});
  outer->get("b")->array()->append(3);
  EXPECT_EQ(inner->size(), 3U);
  EXPECT_EQ(outer->entries().front().first, "b");
  outer->set("b", 1);
  EXPECT_EQ(outer->entries().front().first, "b");
}

TEST(Dictionary, FindsEveryKeyWhileItGrowsAndShrinks) {
  Dictionary dictionary;
  for (int i = 0; i < 100; ++i) dictionary.set(std::to_string(i), i);
  for (int i = 0; i < 100; i += 2) EXPECT_TRUE(dictionary.remove(std::to_string(i)));
  EXPECT_FALSE(dictionary.remove("0"));
  ASSERT_EQ(dictionary.size(), 50U);
  for (int i = 0; i < 100; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(dictionary.contains(std::to_string(i)), i % 2 == 1);
  }
  dictionary.set("1", "again");
  EXPECT_EQ(dictionary.get("1"), Value("again"));
}

TEST(Dictionary, EqualsOneWithTheSameEntriesInAnotherOrder) {
  const auto a = Dictionary::make({{"x", 1}, {"y", Array::make({"z"})}});
  const auto b = Dictionary::make({{"y", Array::make({"z"})}, {"x", true}});
  EXPECT_EQ(*a, *b);
  b->set("x", 2);
  EXPECT_FALSE(*a == *b);
}

}  // namespace
}  // namespace vt
