#include "metadata/store/Bitmap.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace vt {
namespace {

std::vector<std::size_t> numbersIn(const Bitmap& bitmap) {
  std::vector<std::size_t> numbers;
  bitmap.forEach([&](std::size_t number) { numbers.push_back(number); });
  return numbers;
}

TEST(Bitmap, AddsEveryRangeWhole) {
  // Around the ends of words, where a range can go wrong.
  constexpr std::size_t kSize = 130;
  for (std::size_t first = 0; first <= kSize; ++first) {
    for (std::size_t last = first; last <= kSize; ++last) {
      Bitmap bitmap(kSize);
      bitmap.addRange(first, last);
      ASSERT_EQ(bitmap.count(), last - first) << first << " to " << last;
      ASSERT_TRUE(first == last || (bitmap.contains(first) && bitmap.contains(last - 1)));
      bitmap.keepRange(first, (first + last) / 2);
      ASSERT_EQ(bitmap.count(), (first + last) / 2 - first) << first << " to " << last;
    }
  }
}

TEST(Bitmap, HasNothingBeyondItsSizeAfterAFlip) {
  for (const std::size_t size : {0, 1, 63, 64, 65, 128}) {
    Bitmap bitmap(size);
    bitmap.flip();
    EXPECT_EQ(bitmap.count(), size);
    bitmap.flip();
    EXPECT_EQ(bitmap.count(), 0U);
  }
}

TEST(Bitmap, AgreesWithASetOverRandomOperations) {
  constexpr std::size_t kSize = 200;
  std::mt19937 random(20261121);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    Bitmap a(kSize);
    Bitmap b(kSize);
    std::set<std::size_t> setA;
    std::set<std::size_t> setB;
    for (int i = 0; i < 60; ++i) {
      std::size_t number = random() % kSize;
      a.add(number);
      setA.insert(number);
      number = random() % kSize;
      b.add(number);
      setB.insert(number);
    }
    const int operation = round % 4;
    if (operation == 0) a |= b;
    if (operation == 1) a &= b;
    if (operation == 2) a -= b;
    if (operation == 3) a.keepIf([&](std::size_t number) { return b.contains(number); });
    std::vector<std::size_t> expected;
    for (std::size_t number = 0; number < kSize; ++number) {
      const bool inA = setA.contains(number);
      const bool inB = setB.contains(number);
      if (operation == 0 ? inA || inB : operation == 2 ? inA && !inB : inA && inB) {
        expected.push_back(number);
      }
    }
    ASSERT_EQ(numbersIn(a), expected);
    EXPECT_EQ(a.count(), expected.size());
  }
}

}  // namespace
}  // namespace vt
