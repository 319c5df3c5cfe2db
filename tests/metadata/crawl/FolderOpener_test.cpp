#include "metadata/crawl/FolderOpener.h"

#include <dirent.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "metadata/live/FileStatus.h"
#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

bool isSameFile(int a, int b) { return statusOf(a)->isSameFileAs(*statusOf(b)); }

TEST(FolderOpener, OpensFoldersAlone) {
  const LiveTree tree;
  tree.file("folder/file");
  tree.link("link", "folder");
  tree.link("folder/up", "..");
  FolderOpener opener;
  EXPECT_TRUE(opener.open("/").isOpen());
  EXPECT_TRUE(opener.open(tree / "folder").isOpen());
  EXPECT_FALSE(opener.open(tree / "folder/file").isOpen());
  EXPECT_FALSE(opener.open(tree / "missing").isOpen());
  EXPECT_FALSE(opener.open(tree / "link").isOpen());
  EXPECT_FALSE(opener.open(tree / "folder/up/folder").isOpen()) << "a link on the way";
}

TEST(FolderOpener, DoesTheSameStepByStep) {
  const LiveTree tree;
  tree.file("a/b/file");
  tree.link("a/link", "b");
  tree.link("also a", "a");
  const Descriptor root(open(tree.path().c_str(), O_PATH | O_CLOEXEC));
  for (const char* path :
       {"a/b", "a", "a/link", "also a/b", "a/b/file", "a/missing", "missing/b"}) {
    SCOPED_TRACE(path);
    const Descriptor whole = openFolderBelow(root.get(), path, O_RDONLY);
    const Descriptor steps = openFolderByNames(root.get(), path, O_RDONLY);
    ASSERT_EQ(whole.isOpen(), steps.isOpen());
    EXPECT_TRUE(!whole.isOpen() || isSameFile(whole.get(), steps.get()));
  }
}

TEST(FolderOpener, ReachesWhatIsTooDeepForAPath) {
  const LiveTree tree;
  const std::string name(250, 'n');
  std::string path = tree.path();
  FolderOpener opener;
  const Descriptor root(open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  makeDeepFolders(root.get(), name, 80, [&](int folder) {
    path += "/" + name;
    const Descriptor opened = opener.open(path);
    ASSERT_TRUE(opened.isOpen()) << path.size();
    EXPECT_TRUE(isSameFile(opened.get(), folder));
  });
  EXPECT_FALSE(opener.open(path + "/missing").isOpen());
  EXPECT_TRUE(opener.open(path).isOpen());
}

TEST(FolderOpener, LeavesTheAccessTimeWhereItIs) {
  const LiveTree tree;
  tree.file("folder/file");
  const timespec longAgo[2] = {{1'000'000, 0}, {1'000'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, (tree / "folder").c_str(), longAgo, 0), 0);
  const Descriptor folder = FolderOpener().open(tree / "folder");
  char buffer[4096];
  ASSERT_GT(getdents64(folder.get(), buffer, sizeof buffer), 0);
  EXPECT_EQ(statusOf(folder.get())->accessed, dateFromTimespec(longAgo[0]));
}

}  // namespace
}  // namespace vt
