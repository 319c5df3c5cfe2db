// What is left of an index when the writer of an update is killed, its disk is full, or bytes of it
// are changed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

#include "metadata/engine/FoundPaths.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/store/FaultyCalls.h"
#include "metadata/store/GenerationVerifier.h"
#include "metadata/update/ChangingTree.h"
#include "metadata/update/IndexUpdater.h"
#include "platform/linux/ForkedRunner.h"

namespace vt {
namespace {

using testing::HasSubstr;

constexpr std::uint32_t kSeed = 20261121;
// VISTARO_KILLS sets another number.
constexpr std::size_t kKills = 40;
// Whatever changes is merged at once, every other time.
constexpr IndexUpdater::Options kMergesOften{
    .coarsestTick = std::chrono::milliseconds(20), .mostChangedPerMille = 50, .leastChanged = 5};

class UpdateSafety : public FoundPaths {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  }

  void expectAgreement(const IndexedTree& index, const std::string& root) const {
    const auto damage = verifyGeneration(index.generation());
    ASSERT_FALSE(damage) << damage->reason;
    const IndexedTree fresh(root, types_);
    EXPECT_EQ(firstDifference(allIn(index.path(), root), allIn(fresh.path(), root)), "");
  }
};

[[noreturn]] void updateForEver(const IndexedTree& index, const ContentTypes& types,
                                const Extractors& extractors, const std::string& root,
                                std::uint32_t seed) {
  FastCalls calls;
  const IndexFolder folder = IndexFolder::open(index.path(), calls).value();
  ForkedRunner runner;
  IndexUpdater::Options options = kMergesOften;
  options.runner = &runner;
  IndexUpdater updater(folder, index.lock(), types, &extractors, options);
  ChangingTree changing(root, seed);
  for (;;) {
    const auto report = updater.apply(changing.change(3));
    if (!report || report->contentError) ::_exit(1);
    // One that is killed, nothing else, is no merge.
    if (report->mergeError && report->mergeError->reason.find("signal 9") == std::string::npos) {
      ::_exit(3);
    }
    if (!updater.lookIntoFiles([](const ContentCounts&) { return true; })) ::_exit(2);
  }
}

/// The process that merges for the process; 0 when none does.
pid_t mergerOf(pid_t writer) {
  const std::string name = std::to_string(writer);
  std::ifstream children("/proc/" + name + "/task/" + name + "/children");
  pid_t child = 0;
  children >> child;
  return child;
}

/// Waits for all that a killed writer leaves, which end by themselves. How many they were.
std::size_t waitForOrphans() {
  std::size_t count = 0;
  while (::waitpid(-1, nullptr, 0) > 0) ++count;
  return count;
}

TEST_F(UpdateSafety, LeavesOneWholeGenerationWheneverItsWriterIsKilled) {
  const char* const wanted = std::getenv("VISTARO_KILLS");
  const std::size_t kills = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : kKills;
  std::mt19937 random(kSeed);
  std::uniform_int_distribution<long> nanoseconds(0, 30'000'000);
  const RandomFiles files(kSeed, 60);
  IndexedTree index(files.path(), types_, &extractors_);
  // What a killed writer leaves comes to this process.
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  std::size_t withDelta = 0;
  std::size_t orphans = 0;
  std::size_t killedMergers = 0;
  std::uint64_t generation = 1;
  for (std::size_t kill = 0; kill < kills; ++kill) {
    SCOPED_TRACE(testing::Message() << "kill " << kill << ", seed " << kSeed);
    const pid_t writer = ::fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) {
      updateForEver(index, types_, extractors_, files.path(),
                    kSeed + static_cast<std::uint32_t>(kill));
    }
    // Not before it has come to its first update, and then at any moment.
    while (index.folder().manifest()->generation == generation &&
           ::waitpid(writer, nullptr, WNOHANG) == 0) {
      ::sched_yield();
    }
    const timespec moment{0, nanoseconds(random)};
    ::nanosleep(&moment, nullptr);
    if (kill % 3 != 0) {
      // The merger first; the writer goes on without it, or goes with it.
      pid_t merger = 0;
      while (merger == 0 && ::waitpid(writer, nullptr, WNOHANG) == 0) merger = mergerOf(writer);
      const bool isKilled = merger != 0 && ::kill(merger, SIGKILL) == 0;
      killedMergers += isKilled ? 1 : 0;
      if (kill % 3 == 1) ::nanosleep(&moment, nullptr);
    }
    ASSERT_EQ(::kill(writer, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    ASSERT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
    orphans += waitForOrphans();
    const auto current = index.folder().current();
    ASSERT_TRUE(current) << current.error().reason;
    ASSERT_GE(current->manifest.generation, generation);
    withDelta += current->delta ? 1 : 0;
    const auto damage = verifyGeneration(*current);
    ASSERT_FALSE(damage) << damage->reason;
    if (kill % 2 == 0) {
      IndexUpdater updater(index.folder(), index.lock(), types_, &extractors_, kMergesOften);
      const auto report = updater.apply({{}, {}, {files.path()}});
      ASSERT_TRUE(report) << report.error().reason;
      ASSERT_FALSE(report->contentError) << report->contentError->reason;
      ASSERT_TRUE(updater.lookIntoFiles([](const ContentCounts&) { return true; }));
    } else {
      ASSERT_FALSE(index.run({files.path()}).distrusted);
    }
    EXPECT_FALSE(std::filesystem::exists(index.path() + "/" + IndexFolder::kAsideName));
    ASSERT_NO_FATAL_FAILURE(expectAgreement(index, files.path()));
    generation = index.generation().manifest.generation;
  }
  // Kills that hit nothing show nothing.
  EXPECT_GT(generation, 2 * kills);
  EXPECT_GT(withDelta, kills / 20);
  EXPECT_GT(orphans, kills / 20);
  EXPECT_GT(killedMergers, kills / 3);
  std::cout << kills << " writers killed, " << killedMergers << " mergers before them, " << orphans
            << " with them, seed " << kSeed << "\n";
}

TEST_F(UpdateSafety, GoesOnWhicheverCallFails) {
  bool isDone = false;
  int failures = 0;
  int failedMerges = 0;
  for (int at = 0; !isDone; ++at) {
    SCOPED_TRACE(testing::Message() << "at call " << at);
    const RandomFiles files(kSeed, 40);
    const IndexedTree index(files.path(), types_);
    FailingCalls calls;
    const IndexFolder folder = IndexFolder::open(index.path(), calls).value();
    IndexUpdater::Options options = kMergesOften;
    options.leastChanged = 0;
    options.mostChangedPerMille = 0;
    IndexUpdater updater(folder, index.lock(), types_, nullptr, options);
    ASSERT_TRUE(updater.apply({}));
    calls.calls = 0;
    calls.failsAt = at;
    calls.error = ENOSPC;
    calls.writesHalf = at % 2 == 0;
    const FileChanges changes = ChangingTree(files.path(), kSeed).change(8);
    const auto report = updater.apply(changes);
    isDone = report && !report->mergeError;
    if (!isDone) {
      ++failures;
      failedMerges += report ? 1 : 0;
      const StoreError& error = report ? *report->mergeError : report.error();
      EXPECT_EQ(error.kind, StoreError::Kind::kNoSpace);
      EXPECT_THAT(error.reason, HasSubstr("No space left on device"));
    }
    const auto current = index.folder().current();
    ASSERT_TRUE(current) << current.error().reason;
    const auto damage = verifyGeneration(*current);
    ASSERT_FALSE(damage) << damage->reason;
    // Once there is space, the same changes come through.
    calls.failsAt.reset();
    const auto again = updater.apply(changes);
    ASSERT_TRUE(again) << again.error().reason;
    ASSERT_NO_FATAL_FAILURE(expectAgreement(index, files.path()));
  }
  EXPECT_GE(failures, 16);
  EXPECT_GE(failedMerges, 8);
}

void flipBit(const std::string& path, std::size_t at, int bit) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekg(static_cast<std::streamoff>(at));
  const char byte = static_cast<char>(file.get() ^ (1 << bit));
  file.seekp(static_cast<std::streamoff>(at));
  file.put(byte);
}

TEST_F(UpdateSafety, FindsAFlippedBitOfADelta) {
  const RandomFiles files(kSeed, 40);
  IndexedTree index(files.path(), types_);
  IndexUpdater updater(index.folder(), index.lock(), types_);
  ASSERT_TRUE(updater.apply(ChangingTree(files.path(), kSeed).change(12)));
  const auto whole = index.generation();
  ASSERT_TRUE(whole.delta);
  const std::string path = index.path() + "/" + whole.manifest.segments[1].file;
  const std::size_t bytes = std::filesystem::file_size(path);
  std::mt19937 random(kSeed);
  std::size_t foundAtOpen = 0;
  for (std::size_t at = 0; at < bytes; at += 1 + random() % 6) {
    const int bit = static_cast<int>(random() % 8);
    flipBit(path, at, bit);
    const auto current = index.folder().current();
    foundAtOpen += current ? 0 : 1;
    if (current) {
      const auto damage = verifyGeneration(*current);
      ASSERT_TRUE(damage) << "byte " << at;
      EXPECT_EQ(damage->kind, StoreError::Kind::kDamaged);
    }
    flipBit(path, at, bit);
  }
  EXPECT_GT(foundAtOpen, bytes / 20);

  // An updater does not go on from it; a crawl makes it good.
  flipBit(path, bytes / 2, 0);
  IndexUpdater later(index.folder(), index.lock(), types_);
  const auto refused = later.apply({{files.path()}, {}, {}});
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind, StoreError::Kind::kDamaged);
  EXPECT_TRUE(index.run({files.path()}).distrusted);
  ASSERT_TRUE(later.apply({{files.path()}, {}, {}}));
  expectAgreement(index, files.path());
}

TEST_F(UpdateSafety, RefusesADeltaOfAnotherBase) {
  const RandomFiles files(kSeed, 20);
  IndexedTree index(files.path(), types_);
  IndexUpdater updater(index.folder(), index.lock(), types_);
  ASSERT_TRUE(updater.apply(ChangingTree(files.path(), kSeed).change(12)));
  Manifest manifest = index.generation().manifest;
  const SegmentRecord delta = manifest.segments[1];
  std::filesystem::copy_file(index.path() + "/" + delta.file, index.path() + "/kept");
  manifest = index.run({files.path()}).manifest;
  std::filesystem::rename(index.path() + "/kept", index.path() + "/" + delta.file);
  manifest.segments.push_back(delta);
  ASSERT_FALSE(index.folder().vouch(index.lock(), manifest));
  const auto current = index.folder().current();
  ASSERT_FALSE(current);
  EXPECT_EQ(current.error().kind, StoreError::Kind::kDamaged);
  EXPECT_THAT(current.error().reason, HasSubstr("belongs to another segment"));
}

}  // namespace
}  // namespace vt
