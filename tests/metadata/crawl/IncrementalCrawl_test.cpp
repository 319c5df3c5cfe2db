#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/acl.h>

#include <filesystem>
#include <random>

#include "metadata/crawl/CrawlRecord.h"
#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

// As text, so that a difference can be read.
std::map<std::string, std::string> contentOf(const CrawlRecord& record) {
  std::map<std::string, std::string> content;
  for (const auto& [path, entry] : record.byPath()) {
    const FileStatus& s = entry.status;
    content[path] = fmt::format(
        "type {} mode {:o} owner {}:{} size {}/{} times {} {} {} inode {} list {} {}", entry.type,
        s.ownership.mode, s.ownership.uid, s.ownership.gid, s.sizeInBytes, s.allocatedBytes,
        s.modified.time_since_epoch().count(), s.accessed.time_since_epoch().count(),
        s.attributesChanged.time_since_epoch().count(), s.inode, static_cast<int>(entry.acl),
        std::string(entry.aclBytes.begin(), entry.aclBytes.end()));
  }
  return content;
}

bool setAcl(const std::string& path, int uid) {
  acl_t list = acl_from_text(fmt::format("u::rw-,u:{}:r--,g::r--,m::r--,o::r--", uid).c_str());
  const bool isSet = acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list) == 0;
  acl_free(list);
  return isSet;
}

TEST(IncrementalCrawl, FindsWhatAFreshCrawlFinds) {
  constexpr std::uint32_t kSeed = 20261121;
  std::mt19937 random(kSeed);
  SCOPED_TRACE(kSeed);
  const LiveTree tree;
  std::vector<std::string> folders = {tree.path()};
  int made = 0;
  const auto anyFolder = [&] { return folders[random() % folders.size()]; };
  const auto makeFile = [&] {
    const std::string path = anyFolder() + "/f" + std::to_string(++made) + ".txt";
    std::ofstream(path) << made;
    return path;
  };
  std::vector<std::string> files;
  const auto anyFile = [&] { return files[random() % files.size()]; };
  const auto change = [&] {
    std::error_code ignored;  // what an earlier change took away stays away
    switch (random() % 10) {
      case 0:
        folders.push_back(anyFolder() + "/d" + std::to_string(++made));
        std::filesystem::create_directories(folders.back(), ignored);
        break;
      case 1:
        std::filesystem::rename(anyFile(), anyFolder() + "/moved" + std::to_string(++made),
                                ignored);
        break;
      case 2:
        std::filesystem::remove(anyFile(), ignored);
        break;
      case 3:
        std::ofstream(anyFile(), std::ios::app) << "more";
        break;
      case 4:
        std::filesystem::permissions(anyFile(), std::filesystem::perms(random() % 0777), ignored);
        break;
      case 5:
        setAcl(anyFile(), static_cast<int>(1000 + random() % 5));
        break;
      case 6:
        std::filesystem::rename(folders.back(), anyFolder() + "/moved" + std::to_string(++made),
                                ignored);
        break;
      case 7: {
        // A file takes the name of a folder, or the other way round.
        const std::string path = anyFile();
        std::filesystem::remove_all(path, ignored);
        if (random() % 2 == 0) std::filesystem::create_directories(path + "/inside", ignored);
        break;
      }
      case 8: {
        const timespec times[2] = {{static_cast<time_t>(random()), 5},
                                   {static_cast<time_t>(random()), 7}};
        utimensat(AT_FDCWD, anyFile().c_str(), times, 0);
        break;
      }
      default:
        files.push_back(makeFile());
    }
  };
  for (int i = 0; i < 20; ++i) files.push_back(makeFile());
  for (int i = 0; i < 300; ++i) change();

  CrawlRecord before;
  crawl(tree.path(), before);
  for (int round = 0; round < 40; ++round) {
    for (std::uint32_t i = random() % 12; i > 0; --i) change();
    before.seen = Date::max();  // the stamps of this file system are fine enough for the test
    CrawlRecord incremental;
    crawl(tree.path(), incremental, &before);
    CrawlRecord fresh;
    crawl(tree.path(), fresh);
    ASSERT_EQ(contentOf(incremental), contentOf(fresh)) << "round " << round;
    before = std::move(incremental);
  }
  EXPECT_GT(before.entryCount, 50U);
}

/// A tree whose memory does not agree with the disk, so that what was believed shows.
class IncrementalCrawlBelief : public testing::Test {
 protected:
  IncrementalCrawlBelief() {
    tree_.file("folder/real");
    crawl(tree_.path(), memory_);
    auto& entries = memory_.folders[memory_.folderAt(tree_ / "folder")].entries;
    entries.erase("real");
    entries["gone"] = {};
  }
  std::vector<std::string> namesIn(CrawlRecord& record) {
    crawl(tree_.path(), record, &memory_);
    std::vector<std::string> names;
    for (const auto& [name, entry] : record.folders[record.folderAt(tree_ / "folder")].entries) {
      names.push_back(name);
    }
    return names;
  }

  LiveTree tree_;
  CrawlRecord memory_;
};

TEST_F(IncrementalCrawlBelief, DoesNotListAFolderThatHasNotChanged) {
  CrawlRecord record;
  EXPECT_THAT(namesIn(record), testing::IsEmpty());
  EXPECT_FALSE(record.folders[record.folderAt(tree_ / "folder")].isComplete)
      << "since a remembered entry was not there";
}

TEST_F(IncrementalCrawlBelief, ListsAFolderThatMayHaveChangedBehindTheLastCrawl) {
  memory_.seen = statusOf(AT_FDCWD, (tree_ / "folder").c_str())->modified;
  CrawlRecord record;
  EXPECT_THAT(namesIn(record), testing::ElementsAre("real"));
}

TEST_F(IncrementalCrawlBelief, ListsAFolderOfTheFuture) {
  // As a clock leaves it that is set back after the last crawl.
  memory_.seen = Date{} + std::chrono::hours(1);
  CrawlRecord record;
  EXPECT_THAT(namesIn(record), testing::ElementsAre("real"));
}

TEST_F(IncrementalCrawlBelief, ListsAFolderThatWasNotSeenToItsEnd) {
  memory_.folders[memory_.folderAt(tree_ / "folder")].isComplete = false;
  CrawlRecord record;
  EXPECT_THAT(namesIn(record), testing::ElementsAre("real"));
}

TEST_F(IncrementalCrawlBelief, ListsAnotherFolderOfTheSameName) {
  memory_.folders[memory_.folderAt(tree_ / "folder")].stamp.inode += 1;
  CrawlRecord record;
  EXPECT_THAT(namesIn(record), testing::ElementsAre("real"));
}

TEST(IncrementalCrawl, ReadsTheListAgainOfAnEntryThatChanged) {
  const LiveTree tree;
  tree.file("file");
  if (!setAcl(tree / "file", 1001)) GTEST_SKIP() << "no access control lists here";
  CrawlRecord memory;
  crawl(tree.path(), memory);
  auto& remembered = memory.folders[0].entries.at("file");
  remembered.aclBytes = {1, 2, 3};
  const auto listOf = [&] {
    CrawlRecord record;
    crawl(tree.path(), record, &memory);
    return record.folders[0].entries.at("file").aclBytes.size();
  };
  EXPECT_EQ(listOf(), 3U) << "believed while nothing changed";
  memory.seen = remembered.status.attributesChanged;
  EXPECT_EQ(listOf(), 44U) << "changed in the moment of the last crawl";
  memory.seen = Date::max();
  remembered.status.attributesChanged -= std::chrono::microseconds(1);
  EXPECT_EQ(listOf(), 44U) << "changed since";
}

}  // namespace
}  // namespace vt
