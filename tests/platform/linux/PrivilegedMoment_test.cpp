#include "platform/linux/PrivilegedMoment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/ScriptedIdentity.h"

namespace vt {
namespace {

TEST(PrivilegedMoment, ActsAsUserZeroAndThenAsBefore) {
  ScriptedIdentity identity;
  identity.uid = 1000;
  {
    const PrivilegedMoment moment(identity);
    EXPECT_EQ(identity.geteuid(), 0U);
  }
  EXPECT_EQ(identity.geteuid(), 1000U);
}

TEST(PrivilegedMoment, SwitchesNothingForUserZero) {
  ScriptedIdentity identity;
  {
    const PrivilegedMoment moment(identity);
  }
  EXPECT_TRUE(identity.switches.empty());
}

TEST(PrivilegedMoment, GoesOnAsItIsWhereTheProcessMayNotSwitch) {
  ScriptedIdentity identity;
  identity.uid = 1000;
  identity.refused = 0;
  {
    const PrivilegedMoment moment(identity);
  }
  EXPECT_THAT(identity.switches, testing::ElementsAre(0));
  EXPECT_EQ(identity.geteuid(), 1000U);
}

TEST(PrivilegedMomentDeathTest, EndsTheProcessWhenTheWayBackIsRefused) {
  ScriptedIdentity identity;
  identity.uid = 1000;
  identity.refused = 1000;
  EXPECT_DEATH({ const PrivilegedMoment moment(identity); }, "Unable to return to user 1000");
}

}  // namespace
}  // namespace vt
