#include "metadata/watch/ChangeCollector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace vt {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr WatchedFolder kFolder = 7;

class ChangeCollectorTest : public testing::Test {
 protected:
  /// What is taken, as words: names of the folder, "tree NAME", "listed", "everything".
  std::vector<std::string> take() {
    const CollectedChanges taken = collector_.take(now_);
    std::vector<std::string> words;
    if (taken.isEverything) words.emplace_back("everything");
    for (const CollectedFolder& folder : taken.folders) {
      EXPECT_EQ(folder.folder, kFolder);
      if (folder.isToBeListed) words.emplace_back("listed");
      words.insert(words.end(), folder.entries.begin(), folder.entries.end());
      for (const std::string& name : folder.trees) words.push_back("tree " + name);
    }
    for (const std::string& path : taken.trees) words.push_back("tree " + path);
    std::ranges::sort(words);
    return words;
  }
  std::optional<WatchClock::duration> dueIn() const {
    const auto due = collector_.due();
    return due ? std::optional(*due - now_) : std::nullopt;
  }

  WatchInstant now_ = WatchInstant() + std::chrono::hours(1);
  ChangeCollector collector_{{.names = 3, .allNames = 10}};
};

TEST_F(ChangeCollectorTest, HasNothingDueAtFirst) {
  EXPECT_TRUE(collector_.isEmpty());
  EXPECT_EQ(dueIn(), std::nullopt);
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(ChangeCollectorTest, WaitsForQuietButNoLongerThanHalfASecondFromTheFirstEvent) {
  collector_.addEntry(kFolder, "a", now_);
  EXPECT_EQ(dueIn(), milliseconds(50));
  for (int i = 0; i < 12; ++i) {
    now_ += milliseconds(40);
    collector_.addEntry(kFolder, "a", now_);
  }
  EXPECT_EQ(dueIn(), milliseconds(20));
  EXPECT_THAT(take(), ElementsAre("a"));
  EXPECT_EQ(dueIn(), std::nullopt);
}

TEST_F(ChangeCollectorTest, TellsEachNameOnce) {
  for (const char* name : {"a", "b", "a"}) collector_.addEntry(kFolder, name, now_);
  collector_.addTree(kFolder, "t", now_);
  collector_.addTree(kFolder, "t", now_);
  EXPECT_EQ(collector_.size(), 3U);
  EXPECT_THAT(take(), ElementsAre("a", "b", "tree t"));
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(ChangeCollectorTest, TellsOfAFileThatIsBeingWrittenOnceASecond) {
  collector_.addWritten(kFolder, "log", now_);
  EXPECT_EQ(dueIn(), milliseconds(1000));
  now_ += milliseconds(999);
  EXPECT_THAT(take(), IsEmpty());
  collector_.addWritten(kFolder, "log", now_);
  EXPECT_EQ(dueIn(), milliseconds(1));
  now_ += milliseconds(1);
  EXPECT_THAT(take(), ElementsAre("log"));
  collector_.addWritten(kFolder, "log", now_);
  EXPECT_EQ(dueIn(), milliseconds(1000));
}

TEST_F(ChangeCollectorTest, TellsOfAFileThatWasWrittenWhenItIsClosed) {
  collector_.addWritten(kFolder, "text", now_);
  collector_.addEntry(kFolder, "text", now_);
  EXPECT_EQ(dueIn(), milliseconds(50));
  EXPECT_THAT(take(), ElementsAre("text"));
  EXPECT_TRUE(collector_.isEmpty());
}

TEST_F(ChangeCollectorTest, LeavesAFileThatIsBeingWrittenForLaterWhenOthersAreTold) {
  collector_.addWritten(kFolder, "log", now_);
  collector_.addEntry(kFolder, "a", now_);
  now_ += milliseconds(50);
  EXPECT_THAT(take(), ElementsAre("a"));
  EXPECT_FALSE(collector_.isEmpty());
  now_ += milliseconds(950);
  EXPECT_THAT(take(), ElementsAre("log"));
}

TEST_F(ChangeCollectorTest, MakesAStormOfNamesTheFolder) {
  for (const char* name : {"a", "b", "c"}) collector_.addEntry(kFolder, name, now_);
  EXPECT_THAT(take(), SizeIs(3));
  for (const char* name : {"a", "b", "c", "d", "e", ""}) collector_.addEntry(kFolder, name, now_);
  collector_.addWritten(kFolder, "w", now_);
  collector_.addTree(kFolder, "t", now_);
  // The folder itself and what is new in it are not told by its listing.
  EXPECT_THAT(take(), ElementsAre("", "listed", "tree t"));
}

TEST_F(ChangeCollectorTest, MakesAStormOfTreesOneTree) {
  for (const char* name : {"a", "b", "c", "d"}) collector_.addTree(kFolder, name, now_);
  EXPECT_THAT(take(), ElementsAre("tree "));
}

TEST_F(ChangeCollectorTest, GivesUpTellingNamesWhenThereAreTooManyInAll) {
  for (WatchedFolder folder = 0; folder < 11; ++folder) collector_.addEntry(folder, "a", now_);
  collector_.addTreeAt("/mount", now_);
  collector_.addWritten(kFolder, "w", now_);
  EXPECT_TRUE(collector_.isTree(kFolder, "any"));
  EXPECT_THAT(take(), ElementsAre("everything"));
  EXPECT_TRUE(collector_.isEmpty());
}

TEST_F(ChangeCollectorTest, TellsPathsAsTheyAre) {
  collector_.addTreeAt("/mount", now_);
  EXPECT_EQ(dueIn(), milliseconds(50));
  EXPECT_THAT(take(), ElementsAre("tree /mount"));
}

TEST_F(ChangeCollectorTest, KnowsWhatIsATreeUntilItIsTaken) {
  collector_.addTree(kFolder, "t", now_);
  EXPECT_TRUE(collector_.isTree(kFolder, "t"));
  EXPECT_FALSE(collector_.isTree(kFolder, "u"));
  EXPECT_FALSE(collector_.isTree(8, "t"));
  take();
  EXPECT_FALSE(collector_.isTree(kFolder, "t"));
}

}  // namespace
}  // namespace vt
