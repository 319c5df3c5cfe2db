// What any identity must do: run on the process's own, in a child that is root, and on the one in
// memory.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "AccountFolder.h"
#include "platform/linux/LinuxIdentity.h"
#include "platform/memory/MemoryIdentity.h"

namespace vt {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kUser = 61501;
constexpr std::uint32_t kGroup = 61020;

/// The line of the first expectation that does not hold, "" when all do. Not gtest's own, since it
/// runs in a forked child.
#define VT_HOLDS(condition) \
  if (!(condition)) return std::string(#condition) + " in line " + std::to_string(__LINE__)

std::string leavesRootsGroupWhenTheUserIsSetFirst(Identity& identity) {
  VT_HOLDS(identity.seteuid(kUser) == 0);
  VT_HOLDS(identity.geteuid() == kUser);
  VT_HOLDS(identity.setegid(kGroup) == -1);
  VT_HOLDS(identity.getegid() == 0);
  VT_HOLDS(identity.actsAsWanted());
  VT_HOLDS(identity.seteuid(0) == 0);
  VT_HOLDS(identity.setegid(0) == 0);
  VT_HOLDS(identity.geteuid() == 0);
  return "";
}

std::string goesThereAndBackWhenTheGroupIsSetFirst(Identity& identity) {
  VT_HOLDS(identity.setegid(kGroup) == 0);
  VT_HOLDS(identity.seteuid(kUser) == 0);
  VT_HOLDS(identity.getegid() == kGroup);
  VT_HOLDS(identity.setegid(kGroup) == 0);
  VT_HOLDS(identity.setegid(0) == 0);
  VT_HOLDS(identity.seteuid(kUser) == 0);
  VT_HOLDS(identity.seteuid(0) == 0);
  VT_HOLDS(identity.geteuid() == 0 && identity.getegid() == 0);
  return "";
}

std::string remembersARefusedSwitchToAUser(Identity& identity) {
  VT_HOLDS(identity.actsAsWanted());
  VT_HOLDS(identity.seteuid(kUser) == 0);
  VT_HOLDS(identity.seteuid(kUser + 1) == -1);
  VT_HOLDS(identity.geteuid() == kUser);
  VT_HOLDS(!identity.actsAsWanted());
  VT_HOLDS(identity.setegid(0) == 0);
  VT_HOLDS(!identity.actsAsWanted());
  VT_HOLDS(identity.seteuid(0) == 0);
  VT_HOLDS(identity.actsAsWanted());
  return "";
}

std::string refusesIdsThatAreNone(Identity& identity) {
  for (const std::uint64_t id : {0xFFFFFFFFULL, 0x100000000ULL, 0xFFFFFFFFFFFFFFFEULL}) {
    VT_HOLDS(identity.seteuid(id) == -1);
    VT_HOLDS(!identity.actsAsWanted());
    VT_HOLDS(identity.setegid(id) == -1);
    VT_HOLDS(identity.geteuid() == 0 && identity.getegid() == 0);
    VT_HOLDS(identity.seteuid(0) == 0);
  }
  return "";
}

using Check = std::string (*)(Identity&);

/// What `check` says in a child process, so that this one stays who it is.
std::string inAChild(const std::function<std::string()>& check) {
  int ends[2];
  if (pipe(ends) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const std::string said = check();
    const bool written = write(ends[1], said.data(), said.size()) == std::ssize(said);
    _exit(written ? 0 : 1);
  }
  close(ends[1]);
  std::string said;
  char byte = 0;
  while (read(ends[0], &byte, 1) == 1) said += byte;
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return status == 0 ? said : "the child failed";
}

class IdentityContract : public testing::TestWithParam<Check> {};

TEST_P(IdentityContract, HoldsInMemory) {
  MemoryIdentity identity(MemoryIdentity::Rules::kStrict);
  EXPECT_EQ(GetParam()(identity), "");
}

TEST_P(IdentityContract, HoldsOnLinux) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can change its identity";
  EXPECT_EQ(inAChild([] {
              LinuxIdentity identity(fileAccounts("/nowhere"));
              return GetParam()(identity);
            }),
            "");
}

INSTANTIATE_TEST_SUITE_P(Each, IdentityContract,
                         testing::Values(leavesRootsGroupWhenTheUserIsSetFirst,
                                         goesThereAndBackWhenTheGroupIsSetFirst,
                                         remembersARefusedSwitchToAUser, refusesIdsThatAreNone));

TEST(LinuxIdentity, ChangesTheCallingThreadAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can change its identity";
  TemporaryFolder folder;
  const std::string secret = folder / "secret";
  std::ofstream(secret) << "x";
  std::filesystem::permissions(secret, std::filesystem::perms(0600));
  EXPECT_EQ(inAChild([&]() -> std::string {
              const auto opens = [&] {
                const int descriptor = open(secret.c_str(), O_RDONLY | O_CLOEXEC);
                if (descriptor >= 0) close(descriptor);
                return descriptor >= 0;
              };
              std::string said = "the thread did not run";
              std::thread([&] {
                LinuxIdentity identity(fileAccounts("/nowhere"));
                said = identity.seteuid(kUser) != 0 ? "no switch" : opens() ? "still root" : "";
              }).join();
              if (!said.empty()) return said;
              return opens() ? "" : "the other thread was changed";
            }),
            "");
}

/// Calls getgrouplist with room for `room` groups.
std::pair<int, std::vector<std::int32_t>> groupList(const Identity& identity,
                                                    const std::string& name, int room) {
  std::vector<std::int32_t> groups(static_cast<std::size_t>(room));
  int count = room;
  const int status = identity.getgrouplist(name, 20, groups.data(), &count);
  EXPECT_EQ(status, count > room ? -1 : count);
  groups.resize(static_cast<std::size_t>(std::min(count, room)));
  return {count, groups};
}

void expectGroupLists(const Identity& identity) {
  EXPECT_THAT(groupList(identity, "ann", 256).second, ElementsAre(20, 80, 501));
  EXPECT_THAT(groupList(identity, "eve", 256).second, ElementsAre(20));
  const auto [count, groups] = groupList(identity, "ann", 2);
  EXPECT_EQ(count, 3);
  EXPECT_THAT(groups, ElementsAre(20, 80));
  EXPECT_EQ(groupList(identity, "ann", 0).first, 3);
}

TEST(Identity, ListsTheBaseGroupFirstAndCountsWhatHadNoRoom) {
  MemoryIdentity memory;
  memory.setGroups("ann", {80, 20, 501});
  expectGroupLists(memory);
  AccountFolder folder;
  folder.write("passwd", "ann:x:501:99::/:/bin/sh\n");
  folder.write("group", "web:x:80:ann\nstaff:x:20:ann\nhuge:x:4000000000:ann\nown:x:501:ann\n");
  expectGroupLists(LinuxIdentity(fileAccounts(folder.root())));
}

TEST(MemoryIdentity, WritesDownEverySwitchAskedFor) {
  MemoryIdentity identity;
  identity.refuseUser(502);
  EXPECT_EQ(identity.seteuid(501), 0);
  EXPECT_EQ(identity.setegid(20), 0);
  EXPECT_EQ(identity.seteuid(502), -1);
  EXPECT_THAT(identity.calls(), ElementsAre("seteuid 501", "setegid 20", "seteuid 502"));
  EXPECT_EQ(identity.geteuid(), 501U);
  EXPECT_FALSE(identity.actsAsWanted());
}

}  // namespace
}  // namespace vt
