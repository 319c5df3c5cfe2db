#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>

#include "metadata/live/LiveTree.h"
#include "metadata/watch/FanotifyWatch.h"
#include "metadata/watch/InotifyWatch.h"
#include "metadata/watch/WatchedFiles.h"
#include "support/PrivateMounts.h"

namespace vt {
namespace {

template <class Watch>
class MountedWatch : public testing::Test {
 protected:
  /// What is told, as words, without the path of the tree.
  std::string told(WatchedFiles<Watch>& watched) const {
    const FileChanges changes = watched.collectAndTake();
    std::string words;
    for (const std::string& path : changes.entries) words += " " + nameOf(path);
    for (const std::string& path : changes.folders) words += " list:" + nameOf(path);
    for (const std::string& path : changes.trees) words += " tree:" + nameOf(path);
    return words;
  }
  std::string nameOf(const std::string& path) const {
    return path == tree_.path() ? "." : path.substr(tree_.path().size() + 1);
  }

  LiveTree tree_;
};

using Watches = testing::Types<FanotifyWatch, InotifyWatch>;
TYPED_TEST_SUITE(MountedWatch, Watches);

TYPED_TEST(MountedWatch, SeesFileSystemsThatAreMountedLaterAndUnmounted) {
  const LiveTree& tree = this->tree_;
  tree.folder("disk");
  const std::string answer = withMounts([&] {
    WatchedFiles<TypeParam> watched({tree.path()});
    if (!watched.failure().empty()) return watched.failure();
    std::string words = this->told(watched);
    mountAt(tree / "disk", "tmpfs");
    tree.file("disk/early/file");
    words += "|" + this->told(watched);
    tree.file("disk/early/late");
    words += "|" + this->told(watched);
    // Nothing that the watch does keeps it from being unmounted.
    words += umount((tree / "disk").c_str()) == 0 ? "|gone" : std::strerror(errno);
    words += "|" + this->told(watched);
    tree.file("disk/below");
    return words + "|" + this->told(watched);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, "| tree:disk| disk/early/late|gone| tree:disk| disk/below");
}

TYPED_TEST(MountedWatch, TellsAllPlacesWhereAFolderIsBound) {
  const LiveTree& tree = this->tree_;
  tree.file("a/sub/file");
  tree.folder("b");
  const std::string answer = withMounts([&] {
    bindMount(tree / "a/sub", tree / "b");
    WatchedFiles<TypeParam> watched({tree.path()});
    if (!watched.failure().empty()) return watched.failure();
    tree.file("a/sub/new");
    std::string words = this->told(watched);
    tree.file("b/other");
    return words + "|" + this->told(watched);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, " a/sub/new b/new| a/sub/other b/other");
}

TYPED_TEST(MountedWatch, SaysWhenTheKernelHasLostEventsAndGoesOn) {
  const LiveTree& tree = this->tree_;
  tree.folder("old");
  const std::string answer = withMounts([&] {
    mountAt(tree.path(), "tmpfs");
    tree.file("old/file");
    WatchedFiles<TypeParam> watched({tree.path()});
    if (!watched.failure().empty()) return watched.failure();
    const Descriptor folder(open((tree / "old").c_str(), O_RDONLY | O_DIRECTORY));
    for (int i = 0; i < 20'000; ++i) {
      makeFileIn(folder.get(), std::to_string(i).c_str());
    }
    tree.file("new/inner/file");
    std::string words = this->told(watched);
    words += " " + std::to_string(watched.watch().counts().overflows);
    tree.file("new/inner/other");
    return words + "|" + this->told(watched);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, " tree:. 1| new/inner/other");
}

TYPED_TEST(MountedWatch, LeavesTheKernelsOwnFileSystemsAlone) {
  const LiveTree& tree = this->tree_;
  tree.folder("proc");
  const std::string answer = withMounts([&] {
    mountAt(tree / "proc", "proc");
    WatchedFiles<TypeParam> watched({tree.path()});
    if (!watched.failure().empty()) return watched.failure();
    tree.file("file");
    return this->told(watched) + " " + std::to_string(watched.watch().counts().unwatched);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, " file 0");
}

}  // namespace
}  // namespace vt
