#include "metadata/live/PlainTextReader.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "metadata/live/FileStatus.h"
#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

std::optional<std::string> readIn(const LiveTree& tree, const char* name,
                                  const Credentials& who = Credentials(0, 0, {})) {
  const Descriptor folder(open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return readPlainText(folder.get(), name, AccessJudge(who));
}

TEST(PlainTextReader, ReadsRegularFilesOnly) {
  const LiveTree tree;
  tree.file("file", "some words");
  tree.file("empty");
  tree.folder("folder");
  tree.link("link", "file");
  ASSERT_EQ(mkfifo((tree / "pipe").c_str(), 0644), 0);
  EXPECT_EQ(readIn(tree, "file"), "some words");
  EXPECT_EQ(readIn(tree, "empty"), "");
  for (const char* name : {"folder", "link", "pipe", "missing"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(readIn(tree, name), std::nullopt);
  }
}

TEST(PlainTextReader, StopsAtItsLimit) {
  const LiveTree tree;
  tree.file("large", std::string(kMostTextBytes - 2, 'x') + "\xC3\xB6" + "beyond");
  EXPECT_EQ(readIn(tree, "large"), std::string(kMostTextBytes - 2, 'x') + "ö");
}

TEST(PlainTextReader, ReadsNothingThatTheAccountMayNot) {
  const LiveTree tree;
  ASSERT_EQ(chmod(tree.file("private", "secret").c_str(), 0600), 0);
  ASSERT_EQ(chmod(tree.file("shared", "public").c_str(), 0644), 0);
  const Credentials stranger(54321, 54321, {});
  EXPECT_EQ(readIn(tree, "private", stranger), std::nullopt);
  EXPECT_EQ(readIn(tree, "shared", stranger), "public");
}

TEST(PlainTextReader, LeavesTheAccessTimeAlone) {
  const LiveTree tree;
  const std::string path = tree.file("file", "some words");
  const timespec old[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), old, 0), 0);
  ASSERT_TRUE(readIn(tree, "file"));
  EXPECT_EQ(statusOf(AT_FDCWD, path.c_str())->accessed, dateFromTimespec(old[0]));
}

}  // namespace
}  // namespace vt
