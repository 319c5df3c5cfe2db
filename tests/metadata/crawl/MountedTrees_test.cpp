#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <filesystem>

#include "metadata/crawl/CrawlRecord.h"
#include "metadata/live/LiveTree.h"
#include "support/InChildProcess.h"

namespace vt {
namespace {

// Runs `work` where mounts are seen by nobody else and end with it. "no mounts" where that may not
// be done.
std::string withMounts(const std::function<std::string()>& work) {
  return inChildProcess([&]() -> std::string {
    if (unshare(CLONE_NEWNS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
      return "no mounts";
    }
    return work();
  });
}

void mountAt(const std::string& folder, const char* type, const char* options = nullptr) {
  if (mount("none", folder.c_str(), type, 0, options) != 0) {
    throw std::runtime_error(std::string("no mount of ") + type);
  }
}
void bindMount(const std::string& from, const std::string& to) {
  if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
    throw std::runtime_error("no bind mount");
  }
}

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
  if (answer == "no mounts") GTEST_SKIP() << answer;
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
  if (answer == "no mounts") GTEST_SKIP() << answer;
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
  if (answer == "no mounts") GTEST_SKIP() << answer;
  EXPECT_EQ(answer, "created false list false size 4");
}

}  // namespace
}  // namespace vt
