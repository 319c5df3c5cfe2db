#include "metadata/update/IndexUpdater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "metadata/engine/FoundPaths.h"
#include "metadata/indexing/ContentsVerifier.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveTree.h"
#include "metadata/store/GenerationColumns.h"
#include "metadata/store/GenerationVerifier.h"
#include "metadata/store/IndexFreshness.h"
#include "metadata/update/DeferredRunner.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class IndexUpdaterTest : public FoundPaths {
 protected:
  /// What is indexed, as root, in the order of paths.
  std::vector<std::string> found(const std::string& query = "kMDItemFSName == \"*\"") const {
    const auto parsed = query::parseQuery(query, schema_);
    std::vector<std::string> paths =
        indexHits(index_.path(), *parsed, AccessJudge(Credentials(0, 0, {})), {tree_.path()});
    for (std::string& path : paths) path.erase(0, tree_.path().size() + 1);
    std::ranges::sort(paths);
    return paths;
  }
  UpdateReport apply(const FileChanges& changes) {
    const UpdateReport report = valueOrThrow(updater_.apply(changes));
    valueOrThrow(updater_.lookIntoFiles([](const ContentCounts&) { return true; }));
    return report;
  }
  std::string at(const std::string& name) const { return tree_ / name; }

  LiveTree tree_;
  IndexedTree index_{types_, &extractors_};
  IndexUpdater updater_{index_.folder(), index_.lock(), types_, &extractors_};
};

TEST_F(IndexUpdaterTest, TakesWhatCameWentAndChanged) {
  tree_.file("goes.txt");
  tree_.file("changes.txt");
  index_.run({tree_.path()});
  std::filesystem::remove(at("goes.txt"));
  std::ofstream(at("changes.txt")) << "more than before";
  tree_.file("came/inside.txt");
  const UpdateReport report =
      apply({{at("goes.txt"), at("changes.txt"), at("came"), at("never")}, {}, {}});
  EXPECT_EQ(report.generation, 2U);
  EXPECT_EQ(report.rowsAdded, 3U);
  EXPECT_EQ(report.rowsTakenAway, 2U);
  EXPECT_THAT(found(), ElementsAre("came", "came/inside.txt", "changes.txt"));
  EXPECT_THAT(found("kMDItemFSSize == 16"), ElementsAre("changes.txt"));
}

TEST_F(IndexUpdaterTest, PublishesNothingWhenNothingHasChanged) {
  tree_.file("folder/file.txt");
  index_.run({tree_.path()});
  apply({{at("folder/file.txt"), at("folder"), "/elsewhere", "relative", ""},
         {at("folder"), at("gone")},
         {at("folder"), "/elsewhere"}});
  EXPECT_EQ(index_.generation().manifest.generation, 1U);
}

TEST_F(IndexUpdaterTest, ListsAFolderAgain) {
  tree_.file("folder/stays.txt");
  tree_.file("folder/goes.txt");
  index_.run({tree_.path()});
  std::filesystem::remove(at("folder/goes.txt"));
  tree_.file("folder/below/inside.txt");
  apply({{}, {at("folder")}, {}});
  EXPECT_THAT(found(),
              ElementsAre("folder", "folder/below", "folder/below/inside.txt", "folder/stays.txt"));
}

TEST_F(IndexUpdaterTest, CrawlsATreeAnew) {
  tree_.file("a/b/c/goes.txt");
  index_.run({tree_.path()});
  std::filesystem::remove(at("a/b/c/goes.txt"));
  tree_.file("a/b/c/came.txt");
  EXPECT_EQ(apply({{}, {}, {"/"}}).rowsAdded, 2U) << "the file and the folder that it is in";
  EXPECT_THAT(found(), ElementsAre("a", "a/b", "a/b/c", "a/b/c/came.txt"));
}

TEST_F(IndexUpdaterTest, MovesAFolderWithoutTouchingWhatIsBelow) {
  for (int file = 0; file < 50; ++file) tree_.file("from/deep/" + std::to_string(file));
  tree_.file("other/file.txt");
  index_.run({tree_.path()});
  std::filesystem::rename(at("from"), at("other/to"));
  const UpdateReport report = apply({{at("from"), at("other/to")}, {}, {}});
  EXPECT_EQ(report.rowsAdded, 2U) << "the folder and the one that it is in now";
  EXPECT_EQ(columnsOf(index_.generation()).delta.rowCount(), 2U);
  EXPECT_EQ(found("kMDItemPath == \"*/other/to/deep/*\"").size(), 50U);
  EXPECT_THAT(found("kMDItemPath == \"*/from*\""), IsEmpty());
}

TEST_F(IndexUpdaterTest, FindsAChangeByThePathOfBeforeAMove) {
  tree_.file("from/deep/file.txt");
  index_.run({tree_.path()});
  std::ofstream(at("from/deep/file.txt")) << "changed";
  std::filesystem::rename(at("from"), at("to"));
  apply({{at("from/deep/file.txt"), at("from"), at("to")}, {}, {}});
  EXPECT_THAT(found("kMDItemFSSize == 7"), ElementsAre("to/deep/file.txt"));
}

TEST_F(IndexUpdaterTest, FindsAChangeByThePathBetweenTwoMoves) {
  tree_.file("from/deep/deeper/file.txt");
  index_.run({tree_.path()});
  std::filesystem::rename(at("from"), at("between"));
  std::ofstream(at("between/deep/deeper/file.txt")) << "changed";
  std::filesystem::rename(at("between"), at("to"));
  IndexUpdater::Options options;
  options.coarsestTick = std::chrono::microseconds(0);  // or all is too new to be believed
  IndexUpdater updater(index_.folder(), index_.lock(), types_, &extractors_, options);
  valueOrThrow(updater.apply(
      {{at("from"), at("between"), at("between/deep/deeper/file.txt"), at("to")}, {}, {}}));
  valueOrThrow(updater.lookIntoFiles([](const ContentCounts&) { return true; }));
  EXPECT_THAT(found("kMDItemFSSize == 7"), ElementsAre("to/deep/deeper/file.txt"));
}

TEST_F(IndexUpdaterTest, TakesFoldersThatHaveChangedPlaces) {
  tree_.file("a/one.txt");
  tree_.file("b/two.txt");
  index_.run({tree_.path()});
  std::filesystem::rename(at("a"), at("c"));
  std::filesystem::rename(at("b"), at("a"));
  std::filesystem::rename(at("c"), at("b"));
  apply({{at("a"), at("b"), at("c")}, {}, {}});
  EXPECT_THAT(found(), ElementsAre("a", "a/two.txt", "b", "b/one.txt"));
}

TEST_F(IndexUpdaterTest, TellsARemadeFolderFromTheOneBefore) {
  tree_.file("folder/deep/old.txt");
  index_.run({tree_.path()});
  std::filesystem::remove_all(at("folder"));
  tree_.file("folder/deep/new.txt");
  apply({{at("folder")}, {}, {}});
  EXPECT_THAT(found(), ElementsAre("folder", "folder/deep", "folder/deep/new.txt"));
}

TEST_F(IndexUpdaterTest, TakesARootThatWentAndCameBack) {
  tree_.file("root/file.txt");
  index_.run({at("root")});
  std::filesystem::remove_all(at("root"));
  apply({{at("root")}, {}, {}});
  EXPECT_FALSE(indexedFolderAt(indexIn(index_.path())->folders(), at("root")));
  tree_.file("root/again.txt");
  apply({{at("root")}, {}, {}});
  const auto index = indexIn(index_.path());
  EXPECT_TRUE(indexedFolderAt(index->folders(), at("root")));
  EXPECT_EQ(index->columns.entryCount(), 1U);
}

TEST_F(IndexUpdaterTest, FindsTextsOfChangedFiles) {
  std::ofstream(at("changed.txt")) << "before";
  std::ofstream(at("same.txt")) << "before";
  index_.run({tree_.path()});
  std::ofstream(at("changed.txt")) << "afterwards";
  std::filesystem::rename(at("same.txt"), at("renamed.txt"));
  apply({{at("changed.txt"), at("same.txt"), at("renamed.txt")}, {}, {}});
  EXPECT_THAT(found("kMDItemTextContent == \"afterwards\""), ElementsAre("changed.txt"));
  EXPECT_THAT(found("kMDItemTextContent == \"before\""), ElementsAre("renamed.txt"));
  const auto catalogue = valueOrThrow(CatalogueReader::open(index_.path()));
  EXPECT_EQ(valueOrThrow(verifyContents(index_.generation(), *catalogue)).lookedInto, 2U);
}

TEST_F(IndexUpdaterTest, GoesOnFromAGenerationThatSomebodyElsePublished) {
  tree_.file("one.txt");
  index_.run({tree_.path()});
  tree_.file("two.txt");
  apply({{at("two.txt")}, {}, {}});
  tree_.file("three.txt");
  index_.run({tree_.path()});
  EXPECT_FALSE(index_.generation().delta);
  tree_.file("four.txt");
  apply({{at("four.txt")}, {}, {}});
  EXPECT_THAT(found(), ElementsAre("four.txt", "one.txt", "three.txt", "two.txt"));
}

TEST_F(IndexUpdaterTest, MergesWhenMuchHasChanged) {
  for (int file = 0; file < 30; ++file) tree_.file(std::to_string(file));
  index_.run({tree_.path()});
  IndexUpdater::Options options;
  options.leastChanged = 10;
  IndexUpdater updater(index_.folder(), index_.lock(), types_, &extractors_, options);
  FileChanges changes;
  for (int file = 0; file < 12; ++file) {
    std::filesystem::remove(at(std::to_string(file)));
    changes.entries.push_back(at(std::to_string(file)));
    EXPECT_EQ(valueOrThrow(updater.apply({{changes.entries.back()}, {}, {}})).hasMerged,
              file == 10);
  }
  EXPECT_EQ(columnsOf(index_.generation()).base.rowCount(), 19U);
  EXPECT_EQ(columnsOf(index_.generation()).deadCount, 1U);
  EXPECT_EQ(found().size(), 18U);
}

TEST_F(IndexUpdaterTest, BringsAllNamesOfAFileUpToDateWhenOneIsNamed) {
  const std::string one = tree_.file("a/one.txt");
  std::filesystem::create_hard_link(one, at("other.txt"));
  tree_.file("b/apart.txt");
  std::filesystem::create_hard_link(one, at("b/third.txt"));
  index_.run({tree_.path()});
  std::ofstream(at("b/third.txt")) << "changed";
  const UpdateReport report = apply({{at("b/third.txt")}, {}, {}});
  EXPECT_EQ(report.rowsAdded, 3U);
  EXPECT_FALSE(report.missesOtherNames);
  EXPECT_THAT(found("kMDItemFSSize == 7"), ElementsAre("a/one.txt", "b/third.txt", "other.txt"));
  EXPECT_THAT(found("kMDItemTextContent == \"changed\""),
              ElementsAre("a/one.txt", "b/third.txt", "other.txt"));
}

TEST_F(IndexUpdaterTest, KnowsWhenTheInodeHasChangedOfWhatKeepsANameLess) {
  std::filesystem::create_hard_link(tree_.file("a/one.txt"), at("other.txt"));
  index_.run({tree_.path()});
  std::filesystem::remove(at("other.txt"));
  EXPECT_EQ(apply({{at("other.txt")}, {}, {}}).rowsAdded, 1U) << "of which the inode has changed";
  std::filesystem::create_hard_link(at("a/one.txt"), at("again.txt"));
  EXPECT_EQ(apply({{at("again.txt")}, {}, {}}).rowsAdded, 2U);
}

TEST_F(IndexUpdaterTest, ForgetsTextsOfFilesThatWentOnceTheyAreMany) {
  constexpr int kFiles = 1200;
  for (int file = 0; file < kFiles; ++file) {
    std::ofstream(at(std::to_string(file) + ".txt")) << "budget " << file;
  }
  std::ofstream(at("moves.txt")) << "forecast";
  index_.run({tree_.path()});
  const auto contents = [&] {
    return valueOrThrow(valueOrThrow(CatalogueReader::open(index_.path()))->counts()).contents;
  };
  ASSERT_EQ(contents(), kFiles + 1U);
  std::filesystem::rename(at("moves.txt"), at("moved.txt"));
  FileChanges changes{{at("moves.txt"), at("moved.txt")}, {}, {}};
  const auto remove = [&](int file) {
    changes.entries.push_back(at(std::to_string(file) + ".txt"));
    std::filesystem::remove(changes.entries.back());
  };
  remove(0);
  apply(std::exchange(changes, {}));
  EXPECT_EQ(contents(), kFiles + 1U) << "a few are left to the next crawl";
  for (int file = 1; file < kFiles; ++file) remove(file);
  apply(changes);
  EXPECT_EQ(contents(), 1U);
  EXPECT_THAT(found("kMDItemTextContent == \"budget\""), IsEmpty());
  EXPECT_THAT(found("kMDItemTextContent == \"forecast\""), ElementsAre("moved.txt"));
  const auto catalogue = valueOrThrow(CatalogueReader::open(index_.path()));
  EXPECT_EQ(valueOrThrow(verifyContents(index_.generation(), *catalogue)).withoutRow, 0U);
}

TEST_F(IndexUpdaterTest, LooksIntoFilesOfADeltaThatTheCatalogueSaysNothingOf) {
  std::ofstream(at("old.txt")) << "forecast";
  index_.run({tree_.path()});
  std::filesystem::rename(index_.path() + "/catalogue", index_.path() + "/away");
  std::filesystem::create_directory(index_.path() + "/catalogue");
  std::ofstream(at("new.txt")) << "budget";
  ASSERT_TRUE(valueOrThrow(updater_.apply({{at("new.txt")}, {}, {}})).contentError);
  ASSERT_FALSE(updater_.lookIntoFiles([](const ContentCounts&) { return true; }));
  std::filesystem::remove(index_.path() + "/catalogue");
  std::filesystem::rename(index_.path() + "/away", index_.path() + "/catalogue");
  EXPECT_EQ(valueOrThrow(updater_.lookIntoFiles([](const ContentCounts&) { return true; })).done,
            1U);
  EXPECT_THAT(found("kMDItemTextContent == \"budget\""), ElementsAre("new.txt"));
  EXPECT_THAT(found("kMDItemTextContent == \"forecast\""), ElementsAre("old.txt"));
}

/// Updates whose merges run when the test says so.
class MergeBesideUpdates : public IndexUpdaterTest {
 protected:
  void SetUp() override {
    for (int file = 0; file < 8; ++file) tree_.file(nameOf(file));
    index_.run({tree_.path()});
  }
  static std::string nameOf(int file) { return "folder/" + std::to_string(file) + ".txt"; }
  IndexUpdater::Options options() {
    IndexUpdater::Options options;
    options.leastChanged = 2;
    options.mostChangedPerMille = 0;
    options.runner = &runner_;
    return options;
  }
  UpdateReport remove(int file) {
    std::filesystem::remove(at(nameOf(file)));
    return applyBeside({{at(nameOf(file))}, {}, {}});
  }
  UpdateReport applyBeside(const FileChanges& changes) {
    const UpdateReport report = valueOrThrow(beside_.apply(changes));
    valueOrThrow(beside_.lookIntoFiles([](const ContentCounts&) { return true; }));
    return report;
  }
  bool isAnythingAside() const {
    return std::filesystem::exists(index_.path() + "/" + IndexFolder::kAsideName);
  }
  std::size_t baseRows() const { return index_.generation().segment->columns().rowCount(); }

  DeferredRunner runner_;
  IndexUpdater beside_{index_.folder(), index_.lock(), types_, &extractors_, options()};
};

TEST_F(MergeBesideUpdates, PublishesWhatChangesMeanwhileBesideTheMergedBase) {
  remove(0);
  ASSERT_TRUE(beside_.isMerging());
  remove(1);
  tree_.file("folder/new.txt");
  applyBeside({{at("folder/new.txt")}, {}, {}});
  EXPECT_EQ(baseRows(), 9U) << "nobody has waited for it";
  runner_.run();
  std::filesystem::rename(at("folder"), at("renamed"));
  EXPECT_TRUE(applyBeside({{at("folder"), at("renamed")}, {}, {}}).hasMerged);
  EXPECT_EQ(baseRows(), 8U) << "the folder and seven files";
  EXPECT_FALSE(verifyGeneration(index_.generation()));
  EXPECT_THAT(found(),
              ElementsAre("renamed", "renamed/2.txt", "renamed/3.txt", "renamed/4.txt",
                          "renamed/5.txt", "renamed/6.txt", "renamed/7.txt", "renamed/new.txt"));
  EXPECT_FALSE(isAnythingAside());
}

TEST_F(MergeBesideUpdates, PublishesTheMergedBaseWhenNothingChanges) {
  remove(0);
  EXPECT_FALSE(valueOrThrow(beside_.tendMerge())) << "it runs";
  runner_.run();
  EXPECT_TRUE(valueOrThrow(beside_.tendMerge()));
  EXPECT_EQ(baseRows(), 8U);
  EXPECT_FALSE(index_.generation().delta);
  EXPECT_FALSE(valueOrThrow(beside_.tendMerge())) << "there is nothing to merge";
  remove(1);
  EXPECT_EQ(found().size(), 7U);
}

TEST_F(MergeBesideUpdates, IsDroppedWhenACrawlHasPublishedMeanwhile) {
  remove(0);
  runner_.run();
  index_.run({tree_.path()});
  EXPECT_FALSE(isAnythingAside());
  EXPECT_FALSE(valueOrThrow(beside_.tendMerge()));
  EXPECT_FALSE(remove(1).hasMerged);
  EXPECT_EQ(found().size(), 7U);
}

TEST_F(MergeBesideUpdates, IsTriedAgainWhenAsMuchAgainHasChanged) {
  remove(0);
  runner_.kill();
  const UpdateReport report = remove(1);
  ASSERT_TRUE(report.mergeError);
  EXPECT_EQ(report.mergeError->reason,
            "the process that merged it ended too soon: ended by signal 9");
  EXPECT_TRUE(beside_.mergeError());
  EXPECT_EQ(found().size(), 7U) << "what changed is published all the same";
  EXPECT_FALSE(isAnythingAside());
  remove(2);
  remove(3);
  EXPECT_FALSE(beside_.isMerging());
  remove(4);
  ASSERT_TRUE(beside_.isMerging());
  runner_.run();
  EXPECT_TRUE(remove(5).hasMerged);
  EXPECT_FALSE(beside_.mergeError());
  EXPECT_EQ(found().size(), 3U);
}

TEST_F(MergeBesideUpdates, IsNoTroubleAnyMoreOnceACrawlHasMadeANewBase) {
  remove(0);
  runner_.kill();
  remove(1);
  ASSERT_TRUE(beside_.mergeError());
  index_.run({tree_.path()});
  remove(2);
  EXPECT_FALSE(beside_.mergeError());
  EXPECT_TRUE(beside_.isMerging()) << "it need not wait for as much again";
}

TEST_F(MergeBesideUpdates, EndsWithTheUpdater) {
  {
    IndexUpdater updater(index_.folder(), index_.lock(), types_, &extractors_, options());
    std::filesystem::remove(at(nameOf(0)));
    std::filesystem::remove(at(nameOf(1)));
    valueOrThrow(updater.apply({{at(nameOf(0)), at(nameOf(1))}, {}, {}}));
    runner_.run();
    EXPECT_TRUE(isAnythingAside());
  }
  EXPECT_FALSE(isAnythingAside());
}

TEST_F(MergeBesideUpdates, RemovesWhatAKilledProcessHasLeft) {
  std::ofstream(index_.path() + "/" + IndexFolder::kAsideName) << "half of a segm";
  remove(0);
  EXPECT_FALSE(isAnythingAside());
  std::ofstream(index_.path() + "/" + IndexFolder::kAsideName) << "half of a segm";
  index_.run({tree_.path()});
  EXPECT_FALSE(isAnythingAside());
}

TEST_F(IndexUpdaterTest, CountsAsFreshFromWhenItWasVouchedFor) {
  tree_.file("one.txt");
  const Manifest crawled = index_.run({tree_.path()}).manifest;
  const Date later = crawled.began + 10 * kIndexIsFreshFor;
  EXPECT_EQ(freshnessOf(index_.generation().manifest, later), IndexFreshness::kOld);
  valueOrThrow(updater_.apply({}, later));
  const Manifest vouched = index_.generation().manifest;
  EXPECT_EQ(vouched.generation, crawled.generation) << "nothing has changed";
  EXPECT_EQ(vouched.began, crawled.began);
  EXPECT_EQ(freshnessOf(vouched, later), IndexFreshness::kFresh);
  tree_.file("two.txt");
  valueOrThrow(updater_.apply({{at("two.txt")}, {}, {}}));
  EXPECT_EQ(freshnessOf(index_.generation().manifest, later), IndexFreshness::kFresh)
      << "what was vouched for stays so";
}

TEST_F(IndexUpdaterTest, SaysThatThereIsNothingToGoOnFrom) {
  const auto report = updater_.apply({{tree_.path()}, {}, {}});
  ASSERT_FALSE(report);
  EXPECT_EQ(report.error().kind, StoreError::Kind::kMissing);
}

TEST_F(IndexUpdaterTest, UpdatesNamesWhenTheCatalogueCannotBeUsed) {
  tree_.file("one.txt");
  index_.run({tree_.path()});
  std::ofstream(index_.path() + "/catalogue") << "no catalogue";
  tree_.file("two.txt");
  const auto report = updater_.apply({{at("two.txt")}, {}, {}});
  ASSERT_TRUE(report) << report.error().reason;
  EXPECT_TRUE(report->contentError);
  EXPECT_EQ(columnsOf(index_.generation()).entryCount(), 2U);
  EXPECT_FALSE(updater_.lookIntoFiles([](const ContentCounts&) { return true; }));
}

}  // namespace
}  // namespace vt
