#include "metadata/rights/Credentials.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vt {
namespace {

TEST(Credentials, HoldThePrimaryGroupAndEachGroupOnce) {
  const Credentials who(1000, 30, {20, 10, 20});
  EXPECT_THAT(who.groups(), testing::ElementsAre(10, 20, 30));
  EXPECT_TRUE(who.isMemberOf(30));
  EXPECT_TRUE(who.isMemberOf(10));
  EXPECT_FALSE(who.isMemberOf(11));
}

TEST(Credentials, KnowTheirGroupsHoweverManyTheyAre) {
  for (const std::uint32_t count : {0, 1, 15, 16, 17, 500}) {
    SCOPED_TRACE(count);
    std::vector<std::uint32_t> groups;
    for (std::uint32_t group = 1; group <= count; ++group) groups.push_back(10 * group);
    const Credentials who(1000, 5, groups);
    EXPECT_TRUE(who.isMemberOf(5));
    for (const std::uint32_t group : groups) {
      EXPECT_TRUE(who.isMemberOf(group));
      EXPECT_FALSE(who.isMemberOf(group + 1));
    }
    EXPECT_FALSE(who.isMemberOf(0));
  }
}

TEST(Credentials, TakeOnlyUserZeroForTheSuperuser) {
  EXPECT_TRUE(Credentials(0, 100, {}).isSuperuser());
  EXPECT_FALSE(Credentials(100, 0, {0}).isSuperuser());
}

}  // namespace
}  // namespace vt
