#include "metadata/live/PathResolver.h"

#include <gtest/gtest.h>

#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

AccessJudge superuser() { return AccessJudge(Credentials(0, 0, {})); }
AccessJudge stranger() { return AccessJudge(Credentials(54321, 54321, {})); }

TEST(PathResolver, FindsFilesTheWayTheKernelDoes) {
  const LiveTree tree;
  tree.file("a/file");
  tree.folder("a/b");
  tree.link("to-a", "a");
  tree.link("to-file", "a/file");
  tree.link("absolute", tree / "a");
  tree.link("chain", "to-a/../to-a");
  tree.link("loop", "loop");
  tree.link("dangling", "nowhere");
  const struct {
    const char* path;
    const char* canonical;  // nullptr: not found
    const char* shown;
  } cases[] = {
      {"/a/file", "/a/file", "/a/file"},
      {"/a", "/a", "/a"},
      {"/a/", "/a", "/a"},
      {"//a//file", "/a/file", "/a/file"},
      {"/a/./file", "/a/file", "/a/file"},
      {"/a/b/../file", "/a/file", "/a/file"},
      {"/to-a/file", "/a/file", "/to-a/file"},
      {"/to-a", "/a", "/to-a"},
      {"/to-a/", "/a", "/to-a"},
      {"/to-file", "/a/file", "/to-file"},
      {"/absolute/file", "/a/file", "/absolute/file"},
      {"/chain/file", "/a/file", "/chain/file"},
      {"/loop", nullptr, nullptr},
      {"/loop/x", nullptr, nullptr},
      {"/dangling", nullptr, nullptr},
      {"/missing", nullptr, nullptr},
      {"/a/file/", nullptr, nullptr},
      {"/a/file/x", nullptr, nullptr},
      {"/to-file/", nullptr, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    const auto found = resolvePath(tree.path() + c.path, LastLink::kFollow, superuser());
    ASSERT_EQ(found.has_value(), c.canonical != nullptr);
    if (!found) continue;
    EXPECT_EQ(found->canonicalPath, tree.path() + c.canonical);
    EXPECT_EQ(found->shownPath, tree.path() + c.shown);
  }
}

TEST(PathResolver, KeepsALastLinkWhenAsked) {
  const LiveTree tree;
  tree.folder("a");
  tree.link("link", "a");
  tree.link("dangling", "nowhere");
  const auto link = resolvePath(tree / "link", LastLink::kKeep, superuser());
  ASSERT_TRUE(link);
  EXPECT_TRUE(link->status.isLink());
  EXPECT_TRUE(resolvePath(tree / "dangling", LastLink::kKeep, superuser()));
  const auto followed = resolvePath(tree / "link/", LastLink::kKeep, superuser());
  ASSERT_TRUE(followed);
  EXPECT_TRUE(followed->status.isFolder());
}

TEST(PathResolver, RefusesWhatIsNoAbsolutePath) {
  for (const std::string& path :
       {std::string(), std::string("tmp"), std::string("./tmp"), std::string("/tmp\0/x", 7)}) {
    SCOPED_TRACE(path);
    EXPECT_FALSE(resolvePath(path, LastLink::kFollow, superuser()));
  }
}

TEST(PathResolver, FindsTheRoot) {
  for (const char* path : {"/", "//", "/..", "/tmp/.."}) {
    SCOPED_TRACE(path);
    const auto root = resolvePath(path, LastLink::kFollow, superuser());
    ASSERT_TRUE(root);
    EXPECT_EQ(root->canonicalPath, "/");
    EXPECT_EQ(root->shownPath, "/");
  }
}

TEST(PathResolver, LooksIntoNoFolderThatTheAccountMayNotSearch) {
  const LiveTree tree;
  tree.file("closed/a/file");
  tree.file("open/file");
  tree.link("closed/link", tree / "open");
  tree.link("around", "closed/../open");
  ASSERT_EQ(chmod((tree / "closed").c_str(), 0744), 0);
  const struct {
    const char* path;
    bool isFound;
  } cases[] = {
      {"/open/file", true},
      {"/closed", true},  // judged for what is above it only
      {"/closed/a/file", false},
      {"/closed/missing", false},
      {"/closed/link/file", false},
      {"/around/file", false},
      {"/closed/../open/file", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(resolvePath(tree.path() + c.path, LastLink::kFollow, stranger()).has_value(),
              c.isFound);
    EXPECT_EQ(resolvePath(tree.path() + c.path, LastLink::kFollow, superuser()).has_value(),
              std::string_view(c.path) != "/closed/missing");
  }
}

TEST(PathResolver, FindsNamesOfAnyBytes) {
  const LiveTree tree;
  const std::string odd = "\xff line\nfeed";
  tree.file(odd);
  const auto found = resolvePath(tree / odd, LastLink::kFollow, superuser());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->canonicalPath, tree / odd);
}

}  // namespace
}  // namespace vt
