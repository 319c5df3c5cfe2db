#include "metadata/rights/Credentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(Credentials, HoldThePrimaryGroupAndEachGroupOnce) {
  const Credentials who(1000, 30, {20, 10, 20});
  EXPECT_THAT(who.groups(), testing::ElementsAre(10, 20, 30));
  EXPECT_TRUE(who.isMemberOf(30));
  EXPECT_TRUE(who.isMemberOf(10));
  EXPECT_FALSE(who.isMemberOf(11));
}

TEST(Credentials, TakeOnlyUserZeroForTheSuperuser) {
  EXPECT_TRUE(Credentials(0, 100, {}).isSuperuser());
  EXPECT_FALSE(Credentials(100, 0, {0}).isSuperuser());
}

}  // namespace
}  // namespace vt
