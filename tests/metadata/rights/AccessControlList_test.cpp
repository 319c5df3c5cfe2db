#include "metadata/rights/AccessControlList.h"

#include <gtest/gtest.h>

#include "metadata/rights/AclBytes.h"

namespace vt {
namespace {

TEST(AccessControlList, RefusesBytesThatTheKernelWouldNotStore) {
  std::vector<std::uint8_t> cut = aclBytes({{1, 6}, {4, 4}, {32, 4}});
  cut.pop_back();
  const struct {
    const char* what;
    std::vector<std::uint8_t> bytes;
    std::size_t offset;
    const char* reason;
  } cases[] = {
      {"nothing", {}, 0, "it ends within an entry"},
      {"half a version", {2, 0}, 2, "it ends within an entry"},
      {"half an entry", cut, 27, "it ends within an entry"},
      {"version 1", aclBytes({{1, 6}, {4, 4}, {32, 4}}, 1), 0, "its version is unknown"},
      {"version 2 in the wrong byte order", {0, 0, 0, 2}, 0, "its version is unknown"},
      {"no entry", aclBytes({}), 4, "owner, owning group or others are missing"},
      {"tag 0", aclBytes({{0, 6}}), 4, "an entry has an unknown tag"},
      {"tag of two bits", aclBytes({{3, 6}}), 4, "an entry has an unknown tag"},
      {"tag 64", aclBytes({{64, 6}}), 4, "an entry has an unknown tag"},
      {"permission 8", aclBytes({{1, 8}}), 6, "a permission is unknown"},
      {"out of order", aclBytes({{4, 4}, {1, 6}, {32, 4}}), 12, "its entries are out of order"},
      {"two owners", aclBytes({{1, 6}, {1, 6}, {4, 4}, {32, 4}}), 12, "an entry is repeated"},
      {"two masks", aclBytes({{1, 6}, {4, 4}, {16, 4}, {16, 4}, {32, 4}}), 28,
       "an entry is repeated"},
      {"no others", aclBytes({{1, 6}, {4, 4}}), 20, "owner, owning group or others are missing"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto list = AccessControlList::parse(c.bytes);
    ASSERT_FALSE(list);
    EXPECT_EQ(list.error().offset, c.offset);
    EXPECT_EQ(list.error().reason, c.reason);
  }
}

TEST(AccessControlList, GrantsByUserThenAnyGroupThenOthers) {
  const Credentials bob(7, 70, {71, 72});
  const struct {
    const char* what;
    std::vector<std::uint8_t> bytes;
    bool grants;
  } cases[] = {
      {"others", aclBytes({{1, 0}, {4, 0}, {32, 4}}), true},
      {"named user", aclBytes({{1, 0}, {2, 4, 7}, {4, 0}, {16, 7}, {32, 0}}), true},
      {"named user held back by the mask", aclBytes({{1, 0}, {2, 4, 7}, {4, 0}, {16, 3}, {32, 4}}),
       false},
      {"named user without permission, though his group has it",
       aclBytes({{1, 0}, {2, 0, 7}, {4, 0}, {8, 4, 71}, {16, 7}, {32, 4}}), false},
      {"another user is named", aclBytes({{1, 0}, {2, 0, 8}, {4, 0}, {16, 7}, {32, 4}}), true},
      {"second of two groups", aclBytes({{1, 0}, {4, 0}, {8, 0, 71}, {8, 4, 72}, {16, 7}, {32, 0}}),
       true},
      {"group held back by the mask", aclBytes({{1, 0}, {4, 0}, {8, 4, 71}, {16, 0}, {32, 4}}),
       false},
      {"in a group without permission: others do not count",
       aclBytes({{1, 0}, {4, 0}, {8, 0, 71}, {16, 7}, {32, 4}}), false},
      {"a group he is not in", aclBytes({{1, 0}, {4, 0}, {8, 0, 99}, {16, 7}, {32, 4}}), true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto list = AccessControlList::parse(c.bytes);
    ASSERT_TRUE(list) << list.error().reason;
    EXPECT_EQ(list->grants(bob, /*owningGroup=*/500, kMayRead), c.grants);
  }
}

TEST(AccessControlList, CountsTheOwningGroupAmongTheGroups) {
  const Credentials bob(7, 70, {});
  const auto list = AccessControlList::parse(aclBytes({{1, 0}, {4, 4}, {16, 7}, {32, 0}}));
  ASSERT_TRUE(list);
  EXPECT_TRUE(list->grants(bob, 70, kMayRead));
  EXPECT_FALSE(list->grants(bob, 71, kMayRead));
}

TEST(AccessControlList, WantsAllPermissionsFromOneGroup) {
  const Credentials bob(7, 70, {71});
  const auto halves = AccessControlList::parse(
      aclBytes({{1, 0}, {4, 0}, {8, 4, 70}, {8, 1, 71}, {16, 7}, {32, 0}}));
  ASSERT_TRUE(halves);
  EXPECT_TRUE(halves->grants(bob, 500, kMayRead));
  EXPECT_TRUE(halves->grants(bob, 500, kMaySearch));
  EXPECT_FALSE(halves->grants(bob, 500, kMayRead | kMaySearch));
}

}  // namespace
}  // namespace vt
