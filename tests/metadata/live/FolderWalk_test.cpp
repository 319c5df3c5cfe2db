#include "metadata/live/FolderWalk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "metadata/live/LiveFile.h"
#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

/// Notes the paths that a walk comes upon, and does something at each.
class Notes final : public FolderVisitor {
 public:
  explicit Notes(std::function<void(const WalkedEntry&)> atEach = {})
      : atEach_(std::move(atEach)) {}

  void visit(const WalkedEntry& entry) override {
    paths.push_back(joinPath(entry.folderPath, entry.name));
    if (atEach_) atEach_(entry);
  }
  bool entersFolder(std::string_view /*folderPath*/, std::string_view /*name*/) override {
    return true;
  }

  std::vector<std::string> paths;

 private:
  std::function<void(const WalkedEntry&)> atEach_;
};

std::vector<std::string> walk(const std::string& path, const AccessJudge& judge,
                              Notes&& notes = Notes()) {
  const Descriptor root(open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  FolderWalk(judge, notes).walk(root.get(), "");
  return notes.paths;
}

/// Whoever runs the test.
AccessJudge me() {
  std::vector<gid_t> groups(static_cast<std::size_t>(getgroups(0, nullptr)));
  if (getgroups(static_cast<int>(groups.size()), groups.data()) < 0) groups.clear();
  return AccessJudge(Credentials(geteuid(), getegid(), {groups.begin(), groups.end()}));
}

std::size_t openDescriptors() {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

TEST(FolderWalk, ComesUponEverythingOnce) {
  const LiveTree tree;
  tree.file("a/b/one");
  tree.file("a/two");
  tree.file("three");
  tree.folder("empty");
  EXPECT_THAT(walk(tree.path(), me()), testing::UnorderedElementsAre("/a", "/a/b", "/a/b/one",
                                                                     "/a/two", "/three", "/empty"));
}

TEST(FolderWalk, TakesLinksAsTheyAreAndFollowsNone) {
  const LiveTree tree;
  tree.file("a/file");
  tree.link("a/up", "..");
  tree.link("loop", "loop");
  tree.link("away", "/usr");
  EXPECT_THAT(walk(tree.path(), me()),
              testing::UnorderedElementsAre("/a", "/a/file", "/a/up", "/loop", "/away"));
}

TEST(FolderWalk, LeavesOutFoldersThatTheAccountMayNotSearch) {
  const LiveTree tree;
  tree.file("open/file");
  tree.file("closed/deep/file");
  tree.file("listless/file");
  ASSERT_EQ(chmod((tree / "closed").c_str(), 0744), 0);
  ASSERT_EQ(chmod((tree / "listless").c_str(), 0711), 0);
  // Names cannot be listed there, but whoever knows one may open it.
  EXPECT_THAT(walk(tree.path(), AccessJudge(Credentials(54321, 54321, {}))),
              testing::UnorderedElementsAre("/open", "/open/file", "/closed", "/listless",
                                            "/listless/file"));
}

TEST(FolderWalk, GoesDeepWithFewDescriptorsAndPathsTooLongForTheSystem) {
  constexpr int kLevels = 1000;
  const LiveTree tree;
  const Descriptor root(open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  makeDeepFolders(root.get(), "level of the tree", kLevels, [](int folder) {
    makeFileIn(folder, "file");
    // A second folder each, so that the walk comes back to levels it has long closed.
    ASSERT_EQ(mkdirat(folder, "side", 0755), 0);
    makeFileIn(Descriptor(openat(folder, "side", O_RDONLY | O_DIRECTORY)).get(), "inside");
  });

  std::size_t mostOpen = 0;
  std::size_t longestPath = 0;
  const std::size_t openBefore = openDescriptors();
  const std::vector<std::string> paths =
      walk(tree.path(), me(), Notes([&](const WalkedEntry& entry) {
             mostOpen = std::max(mostOpen, openDescriptors());
             longestPath = std::max(longestPath, entry.folderPath.size());
           }));
  EXPECT_EQ(paths.size(), 4U * kLevels);
  EXPECT_EQ(std::ranges::count_if(paths, [](auto& p) { return p.ends_with("/inside"); }), kLevels);
  EXPECT_GT(longestPath, 4U * 4096);
  EXPECT_LE(mostOpen, openBefore + FolderWalk::kMostOpenFolders + 2);
}

TEST(FolderWalk, SkipsWhatVanishesUnderIt) {
  const LiveTree tree;
  for (int i = 0; i < 100; ++i) tree.file("d" + std::to_string(i) + "/file");
  bool isFirst = true;
  const auto paths = walk(tree.path(), me(), Notes([&](const WalkedEntry& entry) {
                            if (!isFirst) return;
                            isFirst = false;
                            for (int i = 0; i < 100; ++i) {
                              const std::string name = "d" + std::to_string(i);
                              if (name != entry.name) std::filesystem::remove_all(tree / name);
                            }
                          }));
  EXPECT_EQ(std::ranges::count_if(paths, [](auto& p) { return p.ends_with("/file"); }), 1);
}

TEST(FolderWalk, IsNotLedAstrayByALinkPutInPlaceOfAFolder) {
  const LiveTree tree;
  const LiveTree elsewhere;
  elsewhere.file("secret");
  tree.folder("a");
  const auto paths = walk(tree.path(), me(), Notes([&](const WalkedEntry&) {
                            std::filesystem::remove(tree / "a");
                            tree.link("a", elsewhere.path());
                          }));
  EXPECT_THAT(paths, testing::ElementsAre("/a"));
}

TEST(FolderWalk, DoesNotTakeAnotherFolderForOneThatItComesBackTo) {
  // Deep enough that the first folder is closed when its second subfolder's turn comes.
  const LiveTree tree;
  tree.folder("top/x");
  tree.folder("top/y");
  for (const char* side : {"top/x", "top/y"}) {
    const Descriptor folder(open((tree / side).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    makeDeepFolders(folder.get(), "d", 40, [](int) {});
  }
  bool isSwapped = false;
  const auto paths = walk(tree.path(), me(), Notes([&](const WalkedEntry& entry) {
                            const auto steps = std::ranges::count(entry.folderPath, '/');
                            if (isSwapped || steps < 40) return;
                            isSwapped = true;
                            std::filesystem::rename(tree / "top", tree / "moved");
                            tree.file("top/x/impostor");
                            tree.file("top/y/impostor");
                          }));
  EXPECT_TRUE(isSwapped);
  EXPECT_EQ(std::ranges::count_if(paths, [](auto& p) { return p.ends_with("impostor"); }), 0);
}

}  // namespace
}  // namespace vt
