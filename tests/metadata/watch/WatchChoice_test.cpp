#include "metadata/watch/WatchChoice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "metadata/live/LiveTree.h"
#include "support/PrivateMounts.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string chosen(const std::string& root) {
  const Result<WatchChoice, std::string> choice = startWatch({{root}, {}}, WatchInstant());
  if (!choice) return choice.error();
  return choice->watch->name() + (choice->why.empty() ? "" : ", since " + choice->why);
}

TEST(WatchChoice, IsFanotifyForTheSuperuser) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser";
  const LiveTree tree;
  const std::string choice = chosen(tree.path());
  // In a container the files may be on an overlay.
  EXPECT_THAT(choice, testing::AnyOf("fanotify", HasSubstr("fanotify cannot")));
}

TEST(WatchChoice, IsInotifyForOthersAndSaysWhy) {
  const LiveTree tree;
  const std::string choice = inChildProcess([&]() -> std::string {
    if (geteuid() == 0 && setuid(2001) != 0) return "no other user";
    return chosen(tree.path());
  });
  EXPECT_THAT(choice, StartsWith("inotify, since fanotify cannot "));
  EXPECT_THAT(choice, HasSubstr("Operation not permitted"));
}

TEST(WatchChoice, IsInotifyWhereTheFileSystemHasNoHandles) {
  const LiveTree tree;
  for (const char* name : {"lower/sub", "upper", "work", "merged"}) tree.folder(name);
  const std::string choice = withMounts([&]() -> std::string {
    const std::string options =
        "lowerdir=" + tree / "lower" + ",upperdir=" + tree / "upper" + ",workdir=" + tree / "work";
    mountAt(tree / "merged", "overlay", options.c_str());
    return chosen(tree / "merged");
  });
  if (choice == kNoMounts || choice == "threw no mount of overlay") GTEST_SKIP() << choice;
  EXPECT_THAT(choice, StartsWith("inotify, since fanotify cannot watch " + tree / "merged"));
}

}  // namespace
}  // namespace vt
