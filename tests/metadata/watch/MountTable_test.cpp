#include "metadata/watch/MountTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> pointsOf(const std::vector<Mount>& mounts) {
  std::vector<std::string> points;
  for (const Mount& mount : mounts) points.push_back(mount.point);
  return points;
}

TEST(MountTable, TakesLinesApart) {
  const std::vector<Mount> mounts = parseMounts(
      "36 35 98:0 / /mnt/a\\040b rw,noatime shared:1 master:2 - ext4 /dev/root rw\n"
      "40 36 0:52 /sub\\134x /mnt/c rw - nfs4 host:/x rw\n");
  EXPECT_THAT(mounts, ElementsAre(Mount{36, 98ULL << 32, "/", "/mnt/a b", "ext4"},
                                  Mount{40, 52, "/sub\\x", "/mnt/c", "nfs4"}));
}

TEST(MountTable, PassesOverWhatMakesNoSense) {
  for (const char* line :
       {"", "\n", "x 35 98:0 / /m rw - ext4 d rw", "36 35 98 / /m rw - ext4 d rw",
        "36 35 98:0 / /m rw ext4", "36 35 98:0 / m rw - ext4 d rw", "36 35"}) {
    EXPECT_THAT(parseMounts(line), IsEmpty()) << line;
  }
  EXPECT_EQ(parseMounts("1 2 3:4 / /a\\9 rw - x y z").front().point, "/a\\9");
}

TEST(MountTable, KnowsWhatIsSeenBelowRoots) {
  const std::vector<Mount> all = parseMounts(
      "1 0 1:0 / / rw - ext4 a rw\n"
      "2 1 2:0 / /data rw - ext4 b rw\n"
      "3 2 3:0 / /data/x/inner rw - tmpfs c rw\n"
      "4 1 4:0 / /database rw - ext4 d rw\n"
      "5 2 5:0 / /data/index rw - ext4 e rw\n"
      "6 1 6:0 / /data rw - ext4 over rw\n");
  const auto seen = mountsSeen(all, {{"/data/x"}, {"/data/index"}});
  ASSERT_THAT(pointsOf(seen), ElementsAre("/data", "/data/x/inner"));
  EXPECT_EQ(seen[0].id, 6U);
  EXPECT_THAT(pointsOf(mountsSeen(all, {{"/home", "/usr"}, {}})), ElementsAre("/"));
  EXPECT_THAT(pointsOf(mountsSeen(all, {{"/data"}, {"/data/index"}})),
              ElementsAre("/data", "/data", "/data/x/inner"));
}

TEST(MountTable, KnowsFileSystemsThatOtherMachinesChange) {
  const auto isShared = [](const char* type) {
    return isSharedByMachines(
        Mount{.id = 1, .device = 1, .root = "/", .point = "/m", .type = type});
  };
  for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "ceph", "9p", "fuse.sshfs"}) {
    EXPECT_TRUE(isShared(type)) << type;
  }
  for (const char* type : {"ext4", "xfs", "btrfs", "tmpfs", "overlay", "fuseblk"}) {
    EXPECT_FALSE(isShared(type)) << type;
  }
}

TEST(MountTable, ReadsThatOfThisProcess) {
  MountTable table;
  EXPECT_TRUE(table.hasChanged());
  EXPECT_FALSE(table.hasChanged());
  const std::vector<Mount> mounts = table.read();
  EXPECT_THAT(pointsOf(mounts), testing::Contains("/"));
  EXPECT_EQ(table.read(), mounts);
}

}  // namespace
}  // namespace vt
