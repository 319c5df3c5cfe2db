#include "metadata/crawl/TreeCrawl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/acl.h>

#include <filesystem>
#include <stdexcept>

#include "metadata/crawl/CrawlRecord.h"
#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

using testing::ElementsAre;

std::size_t openDescriptors() {
  return static_cast<std::size_t>(
      std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

TEST(TreeCrawl, FindsEverythingOnce) {
  const LiveTree tree;
  for (int i = 0; i < 600; ++i) {
    tree.file("d" + std::to_string(i % 70) + "/e" + std::to_string(i % 7) + "/f" +
              std::to_string(i));
  }
  const Descriptor many(open(tree.folder("many").c_str(), O_PATH | O_CLOEXEC));
  for (int i = 0; i < 1500; ++i) makeFileIn(many.get(), std::to_string(i).c_str());
  std::vector<std::string> expected;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(tree.path())) {
    expected.push_back(entry.path());
  }
  std::ranges::sort(expected);
  for (const std::size_t threads : {1, 2, 5}) {
    SCOPED_TRACE(threads);
    CrawlRecord record;
    EXPECT_EQ(crawl(tree.path(), record, nullptr, threads), TreeCrawl::End::kDone);
    EXPECT_THAT(record.repeated, testing::IsEmpty());
    EXPECT_EQ(record.paths(), expected);
    for (const auto& folder : record.folders) {
      EXPECT_EQ(folder.timesFinished, 1) << folder.path;
      EXPECT_TRUE(folder.isComplete) << folder.path;
    }
  }
}

TEST(TreeCrawl, TellsWhatTheFileSystemSaysAndTheTypeByName) {
  const LiveTree tree;
  tree.file("report.pdf", "12345");
  tree.link("link", "report.pdf");
  tree.folder("Safe.app");
  CrawlRecord record;
  crawl(tree.path(), record);
  const auto entries = record.folders[0].entries;
  const auto typeOf = [&](const char* name) {
    return shippedTypes()[entries.at(name).type].identifier;
  };
  EXPECT_EQ(typeOf("report.pdf"), "com.adobe.pdf");
  EXPECT_EQ(typeOf("link"), "public.symlink");
  EXPECT_EQ(entries.at("Safe.app").type, shippedTypes().typeOfFolder("Safe.app"));
  EXPECT_EQ(entries.at("report.pdf").status.sizeInBytes, 5U);
}

TEST(TreeCrawl, FollowsNoLinks) {
  const LiveTree tree;
  tree.file("a/file");
  tree.link("a/up", "..");
  tree.link("loop", "loop");
  tree.link("away", "/usr");
  CrawlRecord record;
  crawl(tree.path(), record);
  EXPECT_THAT(record.paths(), ElementsAre(tree / "a", tree / "a/file", tree / "a/up", tree / "away",
                                          tree / "loop"));
}

TEST(TreeCrawl, GoesDeepWithFewDescriptorsAndPathsTooLongForTheSystem) {
  constexpr int kLevels = 1000;
  const LiveTree tree;
  const Descriptor root(open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  makeDeepFolders(root.get(), "level of the tree", kLevels, [](int folder) {
    ASSERT_EQ(mkdirat(folder, "side", 0755), 0);
    makeFileIn(Descriptor(openat(folder, "side", O_RDONLY | O_DIRECTORY)).get(), "inside");
  });
  std::size_t mostOpen = 0;
  CrawlRecord record;
  record.atEach = [&](const std::string&) { mostOpen = std::max(mostOpen, openDescriptors()); };
  const std::size_t openBefore = openDescriptors();
  crawl(tree.path(), record);
  EXPECT_EQ(record.entryCount, 3U * kLevels);
  EXPECT_EQ(std::ranges::count(record.folders, true, &CrawlRecord::Folder::isComplete),
            2 * kLevels + 1);
  EXPECT_LE(mostOpen, openBefore + 2 * 3 + 1);  // each thread: root, anchor, folder; and this count
}

TEST(TreeCrawl, LeavesOutWhatVanishesUnderIt) {
  const LiveTree tree;
  for (int i = 0; i < 100; ++i) tree.file("d" + std::to_string(i) + "/file");
  CrawlRecord record;
  record.atEach = [&](const std::string& folder) {
    if (folder != tree.path()) return;
    for (int i = 0; i < 50; ++i) {
      std::filesystem::remove_all(tree / ("d" + std::to_string(i)));
    }
  };
  EXPECT_EQ(crawl(tree.path(), record), TreeCrawl::End::kDone);
  EXPECT_EQ(record.entryCount, 150U);
  EXPECT_FALSE(record.folders[record.folders[0].entries.at("d7").folder].isComplete);
}

TEST(TreeCrawl, IsNotLedAwayByAFolderThatMovesWhileItIsWalked) {
  struct Case {
    const char* what;
    std::function<void(const LiveTree&, const LiveTree&)> swap;
  };
  const Case cases[] = {
      {"moved out of the tree",
       [](const LiveTree& tree, const LiveTree& outside) {
         std::filesystem::rename(tree / "a", outside / "a");
       }},
      {"moved out, a link left in its place",
       [](const LiveTree& tree, const LiveTree& outside) {
         std::filesystem::rename(tree / "a", outside / "a");
         tree.link("a", outside / "a");
       }},
      {"another folder put in its place",
       [](const LiveTree& tree, const LiveTree& outside) {
         std::filesystem::rename(tree / "a", outside / "was");
         std::filesystem::rename(outside / "secret", tree / "a");
       }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const LiveTree tree;
    const LiveTree outside;
    tree.file("a/b/file");
    outside.file("secret/b/secret file");
    outside.file("secret/secret too");
    CrawlRecord record;
    record.atEach = [&](const std::string& folder) {
      // Now the walk knows of a/b, and goes there next.
      if (folder == tree / "a") c.swap(tree, outside);
    };
    EXPECT_EQ(crawl(tree.path(), record, nullptr, 1), TreeCrawl::End::kDone);
    EXPECT_THAT(record.paths(), ElementsAre(tree / "a", tree / "a/b"));
  }
}

TEST(TreeCrawl, KeepsAccessControlListsAsTheyAre) {
  const LiveTree tree;
  tree.file("plain");
  acl_t list = acl_from_text("u::rw-,u:12345:r--,g::r--,m::r--,o::---");
  const int set = acl_set_file(tree.file("listed").c_str(), ACL_TYPE_ACCESS, list);
  acl_free(list);
  if (set != 0) GTEST_SKIP() << "no access control lists in the temporary folder";
  CrawlRecord record;
  crawl(tree.path(), record);
  const auto& entries = record.folders[0].entries;
  EXPECT_EQ(entries.at("plain").acl, AclPresence::kNone);
  ASSERT_EQ(entries.at("listed").acl, AclPresence::kPresent);
  const auto parsed = AccessControlList::parse(entries.at("listed").aclBytes);
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->entries().size(), 5U);
}

TEST(TreeCrawl, FindsNothingBelowARootThatIsGone) {
  CrawlRecord record;
  EXPECT_EQ(crawl("/does/not/exist", record), TreeCrawl::End::kDone);
  EXPECT_EQ(record.entryCount, 0U);
  EXPECT_EQ(record.folders[0].timesFinished, 1);
  EXPECT_FALSE(record.folders[0].isComplete);
}

TEST(TreeCrawl, EndsWhenItIsToldTo) {
  const LiveTree tree;
  tree.folder("deeper");
  CrawlRecord record;
  // A tree without end: what is found in a folder gets a folder of its own.
  FolderOpener opener;
  record.atEach = [&](const std::string& folder) {
    mkdirat(opener.open(folder + "/deeper").get(), "deeper", 0755);
  };
  TreeCrawl crawl(shippedTypes(), nullptr, record);
  const auto end = crawl.run({{tree.path(), record.addRoot(tree.path())}},
                             [](const CrawlCounts& counts) { return counts.entries == 0; });
  EXPECT_EQ(end, TreeCrawl::End::kStopped);
  EXPECT_GT(record.entryCount, 0U);
}

TEST(TreeCrawl, EndsWhenTheSinkTakesNoMore) {
  const LiveTree tree;
  for (int i = 0; i < 300; ++i) tree.file("d" + std::to_string(i) + "/file");
  CrawlRecord record;
  record.mostEntries = 310;
  EXPECT_EQ(crawl(tree.path(), record), TreeCrawl::End::kSinkFull);
}

TEST(TreeCrawl, PassesOnWhatAThreadRanInto) {
  const LiveTree tree;
  for (int i = 0; i < 30; ++i) tree.file("d" + std::to_string(i) + "/file");
  CrawlRecord record;
  record.atEach = [&](const std::string& folder) {
    if (folder == tree / "d3") throw std::runtime_error("no more memory");
  };
  EXPECT_THROW(crawl(tree.path(), record), std::runtime_error);
}

}  // namespace
}  // namespace vt
