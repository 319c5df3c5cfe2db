#include <fmt/format.h>
#include <gtest/gtest.h>

#include "metadata/crawl/CrawlRecord.h"
#include "metadata/live/LiveTree.h"
#include "support/PrivateMounts.h"

namespace vt {
namespace {

// The paths below the tree, each behind a blank.
std::string pathsIn(const LiveTree& tree, const CrawlRecord& record) {
  std::string all;
  for (const std::string& path : record.paths()) all += " " + path.substr(tree.path().size() + 1);
  return all;
}

TEST(MountedTrees, AreEnteredUnlessTheKernelShowsItselfThere) {
  const LiveTree tree;
  for (const char* name : {"files", "proc", "sys", "dev"}) tree.folder(name);
  const std::string answer = withMounts([&] {
    mountAt(tree / "files", "tmpfs");
    tree.file("files/inside");
    mountAt(tree / "proc", "proc");
    mountAt(tree / "sys", "sysfs");
    mountAt(tree / "dev", "devtmpfs");
    CrawlRecord record;
    crawl(tree.path(), record);
    return pathsIn(tree, record);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, " dev files files/inside proc sys");
}

TEST(MountedTrees, EndAlsoWhereOneIsBoundIntoItself) {
  const LiveTree tree;
  tree.folder("a/b");
  tree.folder("a/c");
  const std::string answer = withMounts([&] {
    bindMount(tree / "a", tree / "a/b");
    bindMount(tree.path(), tree / "a/c");
    CrawlRecord record;
    const bool isDone = crawl(tree.path(), record) == TreeCrawl::End::kDone;
    return std::to_string(isDone) + pathsIn(tree, record);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, "1 a a/b a/b/b a/b/c a/c a/c/a a/c/a/b a/c/a/b/b a/c/a/b/c a/c/a/c");
}

TEST(MountedTrees, WorkWithoutBirthTimesAndAccessControlLists) {
  const LiveTree tree;
  const std::string answer = withMounts([&] {
    mountAt(tree.path(), "ramfs");
    tree.file("one/file", "text");
    CrawlRecord record;
    crawl(tree.path(), record);
    const auto entries = record.byPath();
    const auto& file = entries.at(tree / "one/file");
    return fmt::format("created {} list {} size {}", file.status.created.has_value(),
                       file.acl == AclPresence::kPresent, file.status.sizeInBytes);
  });
  if (answer == kNoMounts) GTEST_SKIP() << answer;
  EXPECT_EQ(answer, "created false list false size 4");
}

}  // namespace
}  // namespace vt
