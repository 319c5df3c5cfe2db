#include "foundation/NestedContainers.h"

#include <gtest/gtest.h>

#include <memory>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

constexpr int kFarDeeperThanAnyStack = 200'000;

TEST(NestedContainers, AreFreedHoweverDeepTheyAre) {
  std::weak_ptr<Dictionary> innermost;
  Value value;
  for (int i = 0; i < kFarDeeperThanAnyStack; ++i) {
    const auto dictionary = Dictionary::make({{"in", value}});
    if (i == 0) innermost = dictionary;
    value = Array::make({dictionary});
  }
  EXPECT_FALSE(innermost.expired());
  value = nullptr;
  EXPECT_TRUE(innermost.expired());
}

TEST(NestedContainers, StayWholeWhileSomebodyElseHoldsThem) {
  const auto inner = Array::make({1, Array::make({2})});
  {
    const auto outer = Dictionary::make({{"a", inner}, {"b", Array::make({inner})}});
    ASSERT_EQ(outer->size(), 2U);
  }
  ASSERT_EQ(inner->size(), 2U);
  EXPECT_EQ(*inner->at(1).array(), *Array::make({2}));
}

}  // namespace
}  // namespace vt
