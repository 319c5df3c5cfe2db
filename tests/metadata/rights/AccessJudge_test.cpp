#include "metadata/rights/AccessJudge.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vt {
namespace {

AccessJudge bobsJudge() { return AccessJudge(Credentials(7, 70, {71})); }

AclReading noList() { return {true, std::nullopt}; }

TEST(AccessJudge, JudgesByTheFirstOfOwnerGroupAndOthersThatApplies) {
  const struct {
    const char* what;
    FileOwnership file;
    Permissions wanted;
    bool allowed;
  } cases[] = {
      {"owner", {7, 1, S_IFREG | 0400}, kMayRead, true},
      {"owner kept out where others may", {7, 70, S_IFREG | 0044}, kMayRead, false},
      {"group", {1, 71, S_IFREG | 0040}, kMayRead, true},
      {"group kept out where others may", {1, 70, S_IFREG | 0604}, kMayRead, false},
      {"others", {1, 1, S_IFREG | 0004}, kMayRead, true},
      {"others kept out", {1, 1, S_IFREG | 0640}, kMayRead, false},
      {"search is not reading", {1, 1, S_IFDIR | 0755}, kMaySearch, true},
      {"reading is not search", {1, 1, S_IFDIR | 0744}, kMaySearch, false},
      {"link", {1, 1, S_IFLNK | 0777}, kMayRead, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(bobsJudge().allows(c.file, c.wanted, noList), c.allowed);
  }
}

TEST(AccessJudge, LetsTheSuperuserReadEverything) {
  const AccessJudge judge(Credentials(0, 0, {}));
  EXPECT_TRUE(judge.allows({1, 1, S_IFREG | 0000}, kMayRead, noList));
}

TEST(AccessJudge, GrantsByTheModeWhatItAllowsWithoutAList) {
  const AccessJudge judges[] = {bobsJudge(), AccessJudge(Credentials(0, 0, {}))};
  for (const AccessJudge& judge : judges) {
    for (std::uint32_t bits = 0; bits < 01000; ++bits) {
      for (const std::uint32_t type : {S_IFREG, S_IFDIR, S_IFLNK}) {
        for (const std::uint32_t uid : {1U, 7U}) {
          for (const std::uint32_t gid : {1U, 70U, 71U}) {
            const FileOwnership file{uid, gid, type | bits};
            for (const Permissions wanted : {kMayRead, kMaySearch}) {
              ASSERT_EQ((judge.grantedByMode(file) & wanted) != 0,
                        judge.allows(file, wanted, noList))
                  << uid << ' ' << gid << ' ' << std::oct << file.mode;
            }
          }
        }
      }
    }
  }
}

TEST(AccessJudge, RefusesWhenTheListIsNotKnown) {
  const auto unknown = [] { return AclReading{false, std::nullopt}; };
  EXPECT_FALSE(bobsJudge().allows({1, 1, S_IFREG | 0644}, kMayRead, unknown));
}

TEST(AccessJudge, ReadsTheListOnlyWhereItCouldMatter) {
  const struct {
    const char* what;
    FileOwnership file;
    int readings;
  } cases[] = {
      {"owner", {7, 70, S_IFREG | 0644}, 0},
      {"no group bits, so no mask and no list", {1, 1, S_IFREG | 0604}, 0},
      {"neither group nor others may", {1, 1, S_IFREG | 0711}, 0},
      {"link", {1, 1, S_IFLNK | 0777}, 0},
      {"others may", {1, 1, S_IFREG | 0644}, 1},
      {"group may", {1, 1, S_IFREG | 0640}, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    int readings = 0;
    bobsJudge().allows(c.file, kMayRead, [&] {
      ++readings;
      return noList();
    });
    EXPECT_EQ(readings, c.readings);
  }
}

TEST(AccessJudge, KnowsWhereAListMattersToNobody) {
  const struct {
    const char* what;
    std::uint32_t mode;
    bool mayMatter;
  } cases[] = {
      {"usual file", S_IFREG | 0644, true},
      {"group alone", S_IFREG | 0640, true},
      {"owner alone", S_IFREG | 0600, false},
      {"no group bits", S_IFREG | 0604, false},
      {"nobody may read", S_IFREG | 0711, false},
      {"folder to be searched", S_IFDIR | 0711, true},
      {"folder to be listed", S_IFDIR | 0750, true},
      {"folder of its owner", S_IFDIR | 0700, false},
      {"link", S_IFLNK | 0777, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(mayAclMatter(c.mode), c.mayMatter);
  }
}

}  // namespace
}  // namespace vt
