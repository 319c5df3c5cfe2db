#include "metadata/indexing/Indexer.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <random>
#include <set>

#include "metadata/engine/FolderTable.h"
#include "metadata/indexing/CrawledSegment.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveTree.h"
#include "metadata/store/SegmentVerifier.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::chrono::hours kYear{24 * 365};

std::string pathOf(const SegmentColumns& segment, std::uint32_t folder) {
  if (segment.parents[folder] == kNoFolder) return "";
  return pathOf(segment, segment.parents[folder]) + "/" + std::string(segment.folderNames[folder]);
}

/// Every file of a generation with all that is told of it, as text.
std::multiset<std::string> contentOf(const IndexedTree& indexed) {
  const IndexGeneration generation = indexed.generation();
  EXPECT_FALSE(verifySegment(*generation.segment));
  const SegmentColumns& segment = generation.segment->columns();
  std::multiset<std::string> content;
  for (std::size_t row = 0; row < segment.rowCount(); ++row) {
    const AccessClass& accessClass = segment.classes[segment.classOf(row)];
    content.insert(fmt::format(
        "{}/{} {} {:o} {}:{} {} {} {} {} {}", pathOf(segment, segment.folderOf(row)),
        segment.name(row), segment.typeIdentifiers[segment.typeOf(row)], accessClass.ownership.mode,
        accessClass.ownership.uid, accessClass.ownership.gid, segment.sizes[row],
        segment.modified[row], segment.attributesChanged[row], segment.accessed[row],
        segment.allocatedBytesOf(row)));
  }
  return content;
}

std::set<std::string> namesIn(const IndexedTree& indexed) {
  const IndexGeneration generation = indexed.generation();
  const SegmentColumns& segment = generation.segment->columns();
  std::set<std::string> names;
  for (std::size_t row = 0; row < segment.rowCount(); ++row) names.emplace(segment.name(row));
  return names;
}

/// Turns a bit of what a generation says of its files, as a disk would that gives back another than
/// was written: who has read it before still has it whole.
void damage(const std::string& segmentFile) {
  std::string bytes = readFile(segmentFile);
  bytes[1024] ^= 1;
  std::filesystem::remove(segmentFile);
  std::ofstream(segmentFile, std::ios::binary) << bytes;
}

class IndexerTest : public testing::Test {
 protected:
  const ContentTypes types_ = shippedTypes();
  LiveTree tree_;
  IndexedTree indexed_{types_};
};

TEST_F(IndexerTest, HoldsEachRootAndNothingBesideThem) {
  tree_.file("shared/a/x/one.txt");
  tree_.file("shared/a/y/two.txt");
  tree_.file("shared/a/beside.txt");
  const IndexingReport report =
      indexed_.run({tree_ / "shared/a/y", tree_ / "shared/a/x", tree_ / "shared/a/x"});
  EXPECT_THAT(report.manifest.roots, ElementsAre(tree_ / "shared/a/x", tree_ / "shared/a/y"));
  EXPECT_THAT(namesIn(indexed_), ElementsAre("one.txt", "two.txt"));
  const std::shared_ptr<const OpenIndex> index = indexed_.index();
  EXPECT_TRUE(indexedFolderAt(index->folders(), tree_ / "shared/a/x"));
  EXPECT_TRUE(indexedFolderAt(index->folders(), tree_ / "shared/a/y"));
  EXPECT_FALSE(indexedFolderAt(index->folders(), tree_ / "shared/a"));
  EXPECT_FALSE(indexedFolderAt(index->folders(), "/"));
}

TEST_F(IndexerTest, CallsARootThatIsGoneNotListed) {
  tree_.file("here/one.txt");
  const IndexingReport report = indexed_.run({tree_ / "gone", tree_ / "here"});
  EXPECT_EQ(report.crawled.leftOut, 1U);
  EXPECT_THAT(namesIn(indexed_), ElementsAre("one.txt"));
  EXPECT_FALSE(indexedFolderAt(indexed_.index()->columns.base, tree_ / "gone"));
}

TEST_F(IndexerTest, MakesTheSameOfAChangedTreeWithMemoryAsWithout) {
  constexpr std::uint32_t kSeed = 20261121;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  int made = 0;
  std::vector<std::string> folders = {tree_.path()};
  std::vector<std::string> files;
  const auto change = [&] {
    const std::string folder = folders[random() % folders.size()];
    const std::string other = files.empty() ? folder : files[random() % files.size()];
    std::error_code ignored;  // what an earlier change took away stays away
    switch (random() % 6) {
      case 0:
        folders.push_back(folder + "/d" + std::to_string(++made));
        std::filesystem::create_directories(folders.back(), ignored);
        break;
      case 1:
        std::filesystem::remove_all(other, ignored);
        break;
      case 2:
        std::filesystem::rename(other, folder + "/moved" + std::to_string(++made), ignored);
        break;
      case 3:
        std::ofstream(other, std::ios::app) << "more";
        break;
      case 4:
        std::filesystem::permissions(other, std::filesystem::perms(random() % 0777), ignored);
        break;
      default:
        files.push_back(folder + "/f" + std::to_string(++made) + ".txt");
        std::ofstream(files.back()) << made;
    }
  };
  for (int round = 0; round < 15; ++round) {
    for (int i = 0; i < 40; ++i) change();
    indexed_.run({tree_.path()});
    ASSERT_EQ(contentOf(indexed_), contentOf(IndexedTree(tree_.path(), types_))) << round;
  }
  EXPECT_GT(namesIn(indexed_).size(), 50U);
}

TEST_F(IndexerTest, ExpectsAsManyFilesAsThereWere) {
  for (const char* name : {"a", "b", "c"}) tree_.file(name);
  std::vector<std::optional<std::uint64_t>> expected;
  const Indexer indexer(indexed_.folder(), indexed_.lock(), types_);
  for (int run = 0; run < 2; ++run) {
    ASSERT_TRUE(indexer.run({tree_.path()}, [&](const IndexingProgress& progress) {
      if (progress.isPublishing) expected.push_back(progress.expectedEntries);
      return true;
    }));
  }
  EXPECT_THAT(expected, ElementsAre(std::nullopt, 3U));
}

TEST_F(IndexerTest, LeavesTheLastGenerationWhenItIsEnded) {
  tree_.file("before");
  indexed_.run({tree_.path()});
  tree_.file("after");
  const auto report = Indexer(indexed_.folder(), indexed_.lock(), types_)
                          .run({tree_.path()}, [](const IndexingProgress&) { return false; });
  ASSERT_TRUE(report);
  EXPECT_FALSE(report->has_value());
  EXPECT_THAT(namesIn(indexed_), ElementsAre("before"));
}

TEST_F(IndexerTest, ReadsAllAnewWhenTheLastGenerationIsDamagedWhileThatServes) {
  tree_.file("one.txt", "x");
  indexed_.run({tree_.path()});
  const std::shared_ptr<const OpenIndex> serving = indexed_.index();
  damage(indexed_.path() + "/segment-1");
  const IndexingReport report = indexed_.run({tree_.path()});
  ASSERT_TRUE(report.distrusted);
  EXPECT_EQ(report.distrusted->kind, StoreError::Kind::kDamaged);
  EXPECT_THAT(report.distrusted->reason, HasSubstr("segment-1"));
  EXPECT_EQ(contentOf(indexed_), contentOf(IndexedTree(tree_.path(), types_)));
  EXPECT_EQ(serving->columns.base.rowCount(), 1U);
  EXPECT_EQ(serving->columns.base.name(0), "one.txt");
  EXPECT_FALSE(indexed_.run({tree_.path()}).distrusted);
}

TEST_F(IndexerTest, ReadsAllAnewWhenTheManifestIsDamaged) {
  tree_.file("one.txt");
  indexed_.run({tree_.path()});
  std::ofstream(indexed_.path() + "/manifest", std::ios::app) << "x";
  EXPECT_TRUE(indexed_.run({tree_.path()}).distrusted);
  EXPECT_THAT(namesIn(indexed_), ElementsAre("one.txt"));
}

TEST_F(IndexerTest, FindsWhatChangedThoughTheClockWasSetBack) {
  tree_.file("folder/one.txt");
  CrawledSegment early(types_);
  TreeCrawl crawl(types_, nullptr, early);
  crawl.run({{tree_.path(), early.addRoot(tree_.path())}}, [](const CrawlCounts&) { return true; });
  Manifest manifest;
  manifest.roots = {tree_.path()};
  manifest.began = std::chrono::floor<Date::duration>(std::chrono::system_clock::now() + kYear);
  ASSERT_TRUE(indexed_.folder().publish(indexed_.lock(), early.built(), manifest));
  tree_.file("folder/two.txt");
  indexed_.run({tree_.path()});
  EXPECT_EQ(contentOf(indexed_), contentOf(IndexedTree(tree_.path(), types_)));
}

TEST_F(IndexerTest, FindsWhatChangesInFoldersOfTheFuture) {
  const std::string folder = tree_.folder("folder");
  const auto future =
      std::chrono::system_clock::to_time_t(std::chrono::system_clock::now() + kYear);
  const timespec times[2] = {{future, 0}, {future, 0}};
  for (const char* name : {"one.txt", "two.txt"}) {
    const std::string path = tree_.file(std::string("folder/") + name);
    // The folder looks as if nothing had happened in it.
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    ASSERT_EQ(utimensat(AT_FDCWD, folder.c_str(), times, 0), 0);
    indexed_.run({tree_.path()});
  }
  EXPECT_THAT(namesIn(indexed_), ElementsAre("folder", "one.txt", "two.txt"));
}

TEST_F(IndexerTest, TellsFullDisksAndLeavesTheLastGeneration) {
  class NoSpace final : public StoreCalls {
   public:
    ssize_t write(int, const void*, std::size_t, std::uint64_t) override {
      errno = ENOSPC;
      return -1;
    }
  } calls;
  tree_.file("before");
  indexed_.run({tree_.path()});
  tree_.file("after");
  const IndexFolder full = IndexFolder::open(indexed_.path(), calls).value();
  const auto report =
      Indexer(full, indexed_.lock(), types_).run({tree_.path()}, [](const IndexingProgress&) {
        return true;
      });
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().kind, StoreError::Kind::kNoSpace);
  EXPECT_THAT(namesIn(indexed_), ElementsAre("before"));
}

TEST_F(IndexerTest, HoldsAnEmptyFolder) {
  indexed_.run({tree_.path()});
  EXPECT_THAT(namesIn(indexed_), IsEmpty());
  EXPECT_TRUE(indexedFolderAt(indexed_.index()->columns.base, tree_.path()));
}

}  // namespace
}  // namespace vt
