#include "platform/ActingAs.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "AccountFolder.h"
#include "foundation/NSLog.h"
#include "platform/linux/LinuxIdentity.h"
#include "platform/memory/MemoryIdentity.h"
#include "support/InChildProcess.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const ActingAccount kAnn{.name = "ann", .uid = 61501, .gid = 61020};

/// Root, in the groups 0 and 4, on a system where ann is also in group 61080.
class ActingAsTest : public testing::Test {
 protected:
  ActingAsTest() {
    identity_.setgroups({0, 4});
    identity_.setGroups("ann", {61080});
  }

  void expectRootAsBefore() {
    EXPECT_EQ(identity_.geteuid(), 0U);
    EXPECT_EQ(identity_.getegid(), 0U);
    EXPECT_THAT(identity_.getgroups(), ElementsAre(0, 4));
    EXPECT_TRUE(identity_.actsAsWanted());
  }

  MemoryIdentity identity_{MemoryIdentity::Rules::kStrict};
};

TEST_F(ActingAsTest, TakesOnGroupsGroupAndUserInThisOrderAndGoesBackTheOtherWay) {
  {
    const ActingAs acting(identity_, kAnn);
    EXPECT_TRUE(acting.isInForce());
    EXPECT_EQ(identity_.geteuid(), 61501U);
    EXPECT_EQ(identity_.getegid(), 61020U);
    EXPECT_THAT(identity_.getgroups(), ElementsAre(61020, 61080));
  }
  expectRootAsBefore();
  EXPECT_THAT(identity_.calls(),
              ElementsAre("setgroups 0,4", "setgroups 61020,61080", "setegid 61020",
                          "seteuid 61501", "seteuid 0", "setegid 0", "setgroups 0,4"));
}

TEST_F(ActingAsTest, ReturnsToTheGroupThatASearchLeftBehind) {
  identity_.setegid(20);
  {
    const ActingAs acting(identity_, kAnn);
  }
  EXPECT_EQ(identity_.getegid(), 20U);
}

TEST_F(ActingAsTest, IsNotInForceWhenAnyStepIsRefused) {
  struct Case {
    const char* what;
    void (*refuse)(MemoryIdentity& identity);
  };
  const Case cases[] = {
      {"groups", [](MemoryIdentity& identity) { identity.refuseGroupLists(); }},
      {"group", [](MemoryIdentity& identity) { identity.refuseGroup(61020); }},
      {"user", [](MemoryIdentity& identity) { identity.refuseUser(61501); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    identity_ = MemoryIdentity(MemoryIdentity::Rules::kStrict);
    identity_.setgroups({0, 4});
    c.refuse(identity_);
    EXPECT_FALSE(ActingAs(identity_, kAnn).isInForce());
    expectRootAsBefore();
  }
}

TEST_F(ActingAsTest, TakesOnNoIdThatIsNone) {
  for (const std::uint64_t id : {0xFFFFFFFFULL, 0x100000000ULL, 0x10000F03DULL}) {
    SCOPED_TRACE(id);
    EXPECT_FALSE(ActingAs(identity_, {.name = "ann", .uid = id, .gid = 61020}).isInForce());
    EXPECT_FALSE(ActingAs(identity_, {.name = "ann", .uid = 61501, .gid = id}).isInForce());
    expectRootAsBefore();
  }
}

TEST_F(ActingAsTest, EndsTheProcessWhenAnyStepBackIsRefused) {
  struct Case {
    const char* what;
    void (*refuse)(MemoryIdentity& identity);
  };
  const Case cases[] = {
      {"groups", [](MemoryIdentity& identity) { identity.refuseGroupLists(); }},
      {"group", [](MemoryIdentity& identity) { identity.refuseGroup(0); }},
      {"user", [](MemoryIdentity& identity) { identity.refuseUser(0); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto act = [&] {
      const ActingAs acting(identity_, kAnn);
      c.refuse(identity_);
    };
    EXPECT_DEATH(act(), "Unable to return to user 0");
  }
}

TEST_F(ActingAsTest, EndsTheProcessWhenTheWayBackFromHalfWayIsRefused) {
  identity_.refuseUser(61501);
  identity_.refuseGroup(0);
  EXPECT_DEATH(ActingAs(identity_, kAnn), "Unable to return to user 0");
}

/// "" for a file that opens, else the error.
std::string opening(const std::string& path) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return strerrorname_np(errno);
  close(descriptor);
  return "";
}

TEST(ActingAs, OpensWhatTheAccountMayReadAndNoMore) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can act as others";
  AccountFolder accounts;
  accounts.write("passwd", "ann:x:61501:61020::/:/bin/sh\n");
  accounts.write("group", "web:x:61080:ann\nhuge:x:4000000000:ann\n");
  const TemporaryFolder folder;
  struct Case {
    const char* what;
    uid_t owner;
    gid_t group;
    mode_t mode;
    const char* error;
  };
  const Case cases[] = {
      {"root's own", 0, 0, 0600, "EACCES"},
      {"root's group's", 0, 0, 0640, "EACCES"},
      {"a group's of the process", 0, 61099, 0640, "EACCES"},
      {"her own", 61501, 0, 0400, ""},
      {"her primary group's", 0, 61020, 0040, ""},
      {"her further group's", 0, 61080, 0040, ""},
      {"her widest group's", 0, 4000000000, 0040, ""},
      {"closed to her further group", 0, 61080, 0604, "EACCES"},
      {"everybody's", 0, 0, 0604, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string path = folder / c.what;
    std::ofstream(path) << "x";
    ASSERT_EQ(chown(path.c_str(), c.owner, c.group), 0);
    ASSERT_EQ(chmod(path.c_str(), c.mode), 0);
    EXPECT_EQ(inChildProcess([&]() -> std::string {
                LinuxIdentity identity(fileAccounts(accounts.root()));
                if (identity.setgroups({0, 61099}) != 0) return "no groups";
                std::string error;
                {
                  const ActingAs acting(identity, kAnn);
                  if (!acting.isInForce()) return "refused";
                  error = opening(path);
                }
                if (geteuid() != 0 || getegid() != 0) return "not back";
                if (identity.getgroups() != std::vector<std::uint32_t>{0, 61099}) return "groups";
                return error;
              }),
              c.error);
  }
}

TEST(ActingAs, IsRefusedWhereTheProcessMayNotSetGroups) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can act as others";
  EXPECT_EQ(inChildProcess([]() -> std::string {
              LinuxIdentity identity(fileAccounts("/nowhere"));
              // An ordinary user may set neither, and stays.
              if (identity.seteuid(61502) != 0) return "no switch";
              const bool isInForce = ActingAs(identity, kAnn).isInForce();
              return fmt::format("{} {}", isInForce, identity.geteuid());
            }),
            "false 61502");
}

}  // namespace
}  // namespace vt
