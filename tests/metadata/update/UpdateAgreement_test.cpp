#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "metadata/engine/FoundPaths.h"
#include "metadata/engine/RandomQuery.h"
#include "metadata/indexing/ContentsVerifier.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/query/QueryParser.h"
#include "metadata/store/GenerationVerifier.h"
#include "metadata/update/ChangingTree.h"
#include "metadata/update/DeferredRunner.h"
#include "metadata/update/IndexUpdater.h"
#include "platform/linux/ForkedRunner.h"

namespace vt {
namespace {

constexpr std::uint32_t kSeed = 20261121;
// Some seconds of work; VISTARO_ROUNDS sets another number.
constexpr std::size_t kRounds = 60;
constexpr std::size_t kRoundsOfATree = 20;
constexpr std::size_t kQueriesOfARound = 12;

// Several ticks of any kernel, whose file systems count nanoseconds.
constexpr IndexUpdater::Options kOptions{
    .coarsestTick = std::chrono::milliseconds(20), .mostChangedPerMille = 300, .leastChanged = 20};

/// Who merges the index of a tree: its updates themselves, a process beside them, or the test at
/// random moments between them.
class Runners {
 public:
  explicit Runners(std::uint32_t tree) : which_(tree % 3) {}

  IndexUpdater::Options options() {
    IndexUpdater::Options options = kOptions;
    if (which_ == 1) options.runner = &forked_;
    if (which_ == 2) options.runner = &deferred_;
    return options;
  }
  void runNow() { deferred_.run(); }

 private:
  std::uint32_t which_;
  ForkedRunner forked_;
  DeferredRunner deferred_;
};

std::size_t wantedRounds() {
  const char* const wanted = std::getenv("VISTARO_ROUNDS");
  return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : kRounds;
}

class UpdateAgreement : public FoundPaths {};

TEST_F(UpdateAgreement, IsCompleteWithACrawlAndAWalkAfterRandomChanges) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  const std::size_t rounds = wantedRounds();
  RandomQuery queries(kSeed);
  std::size_t hits = 0;
  std::size_t merges = 0;
  std::size_t mergesBeside = 0;  // while something changed
  std::size_t changed = 0;
  std::size_t done = 0;
  for (std::uint32_t tree = 0; done < rounds; ++tree) {
    RandomFiles files(kSeed + tree, 120);
    ChangingTree changing(files.path(), kSeed + tree,
                          tree % 2 == 0 ? ChangingTree::Names::kAll : ChangingTree::Names::kOne);
    IndexedTree index(files.path(), types_, &extractors_);
    Runners runners(tree);
    auto updater = std::make_unique<IndexUpdater>(index.folder(), index.lock(), types_,
                                                  &extractors_, runners.options());
    for (std::size_t i = 0; i < kRoundsOfATree && done < rounds; ++i, ++done) {
      SCOPED_TRACE(fmt::format("seed {}, tree {}, round {}", kSeed, tree, i));
      if (files.pick(6) == 0) {
        updater.reset();
        updater = std::make_unique<IndexUpdater>(index.folder(), index.lock(), types_, &extractors_,
                                                 runners.options());
      }
      // An indexer may crawl in between, and goes on from what was updated.
      if (files.pick(15) == 0) index.run({files.path()});
      if (files.pick(2) == 0) runners.runNow();
      if (files.pick(4) == 0) {
        const auto tended = updater->tendMerge();
        ASSERT_TRUE(tended) << tended.error().reason;
        merges += *tended ? 1 : 0;
      }
      const FileChanges changes = changing.change(1 + files.pick(14));
      const auto report = updater->apply(changes);
      ASSERT_TRUE(report) << report.error().reason;
      ASSERT_FALSE(report->contentError) << report->contentError->reason;
      ASSERT_FALSE(report->mergeError) << report->mergeError->reason;
      ASSERT_FALSE(report->missesOtherNames);
      merges += report->hasMerged ? 1 : 0;
      mergesBeside += report->hasMerged && index.generation().delta ? 1 : 0;
      changed += report->rowsAdded;
      const auto looked = updater->lookIntoFiles([](const ContentCounts&) { return true; });
      ASSERT_TRUE(looked) << looked.error().reason;
      const auto damage = verifyGeneration(index.generation());
      ASSERT_FALSE(damage) << damage->reason;
      const auto catalogue = CatalogueReader::open(index.path());
      ASSERT_TRUE(catalogue) << catalogue.error().reason;
      const auto contents = verifyContents(index.generation(), **catalogue);
      ASSERT_TRUE(contents) << contents.error().reason;
      ASSERT_EQ(contents->pending, 0U);

      const IndexedTree fresh(files.path(), types_, &extractors_);
      ASSERT_EQ(
          firstDifference(allIn(index.path(), files.path()), allIn(fresh.path(), files.path())), "")
          << fmt::format("entries {}\ntrees {}", fmt::join(changes.entries, "\n  "),
                         fmt::join(changes.trees, "\n  "));
      for (std::size_t asked = 0; asked < kQueriesOfARound; ++asked) {
        const std::string text = queries.next();
        const auto query = query::parseQuery(text, schema_);
        ASSERT_TRUE(query) << text;
        const std::uint32_t uid =
            files.pick(5) == 0 ? 0 : RandomFiles::kFirstUid + files.pick(RandomFiles::kUsers);
        const AccessJudge judge(
            Credentials(uid, RandomFiles::kFirstGid + files.pick(RandomFiles::kGroups), {}));
        const auto found = indexHits(index.path(), *query, judge, {files.path()});
        ASSERT_EQ(found, indexHits(fresh.path(), *query, judge, {files.path()}))
            << "user " << uid << ": " << text;
        ASSERT_EQ(found, liveHits(*query, judge, {files.path()})) << "user " << uid << ": " << text;
        hits += found.size();
      }
    }
  }
  // Agreeing says nothing when there is nothing to agree on.
  EXPECT_GT(hits, rounds * 50);
  EXPECT_GT(merges, rounds / 20);
  EXPECT_GT(mergesBeside, rounds / 30);
  EXPECT_GT(changed, rounds * 5);
  std::cout << rounds << " rounds, " << changed << " changed entries, " << merges << " merges, "
            << mergesBeside << " of them while something changed, " << hits << " hits, seed "
            << kSeed << "\n";
}

}  // namespace
}  // namespace vt
