#include "metadata/watch/WatchLoop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "metadata/watch/MemoryWatch.h"

namespace vt {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes what it is asked to do, and does what the test wants while it is at it.
class NotingSink final : public ChangeSink {
 public:
  Result<bool, StoreError> crawl(Meanwhile goesOn) override { return note("crawl", goesOn); }
  Result<Applied, StoreError> apply(const FileChanges& changes, Meanwhile goesOn) override {
    std::string text = "apply";
    for (const std::string& path : changes.entries) text += " " + path;
    for (const std::string& path : changes.trees) text += " tree " + path;
    const Result<bool, StoreError> isDone = note(text, goesOn);
    if (!isDone) return isDone.error();
    return *isDone ? applied : Applied::kEnded;
  }
  Result<bool, StoreError> lookIntoFiles(Meanwhile goesOn) override { return note("look", goesOn); }

  std::vector<std::string> notes;
  std::optional<StoreError> failure;
  Applied applied = Applied::kAll;
  std::function<void()> work = [] {};
  int steps = 1;  // of each piece of work

 private:
  Result<bool, StoreError> note(const std::string& text, Meanwhile goesOn) {
    notes.push_back(text);
    for (int i = 0; i < steps; ++i) {
      work();
      if (!goesOn()) {
        notes.back() += " (ended)";
        return false;
      }
    }
    if (failure) return *failure;
    return true;
  }
};

class WatchLoopTest : public testing::Test {
 protected:
  WatchLoopTest() { EXPECT_TRUE(watch_.start({{"/watched"}, {}}, now_)); }

  /// What the sink was asked for since the last call.
  std::vector<std::string> notes() { return std::exchange(sink_.notes, {}); }
  void settle() {
    for (int i = 0; i < 3; ++i) loop_.step();
    notes();
  }
  void stepAfter(WatchClock::duration time) {
    now_ += time;
    loop_.step();
  }

  WatchInstant now_ = WatchInstant() + hours(1000);
  MemoryWatch watch_;
  NotingSink sink_;
  bool isEnded_ = false;
  WatchLoop loop_{watch_, sink_, [this] { return now_; }, [this] { return isEnded_; }};
};

TEST_F(WatchLoopTest, BeginsWithACrawlAndThenLooksIntoFiles) {
  EXPECT_EQ(loop_.vouchedUntil(), std::nullopt);
  loop_.step();
  loop_.step();
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("crawl", "look"));
  EXPECT_EQ(loop_.vouchedUntil(), now_);
}

TEST_F(WatchLoopTest, AppliesWhatChangesWhenItIsQuietAndThenLooksIntoIt) {
  settle();
  watch_.change("a");
  loop_.step();
  EXPECT_THAT(notes(), IsEmpty());
  watch_.change("b");
  stepAfter(milliseconds(49));
  EXPECT_THAT(notes(), IsEmpty());
  stepAfter(milliseconds(50));
  stepAfter(milliseconds(1));
  EXPECT_THAT(notes(), ElementsAre("apply /watched/a /watched/b", "look"));
  EXPECT_EQ(loop_.lastBatch()->entries, 2U);
}

TEST_F(WatchLoopTest, SaysWhenItIsToBeCalledAgain) {
  settle();
  EXPECT_EQ(loop_.step(), now_ + hours(24));
  watch_.change("a");
  EXPECT_EQ(loop_.step(), now_ + milliseconds(50));
  watch_.loseSightOf({"/watched/far"});
  EXPECT_EQ(loop_.step(), now_ + milliseconds(50));
  settle();
  EXPECT_EQ(loop_.step(), now_ + milliseconds(50));
  now_ += milliseconds(50);
  settle();
  EXPECT_EQ(loop_.step(), now_ - milliseconds(50) + minutes(5));
}

TEST_F(WatchLoopTest, CrawlsOnceADay) {
  settle();
  stepAfter(hours(24) - milliseconds(1));
  EXPECT_THAT(notes(), IsEmpty());
  stepAfter(milliseconds(1));
  EXPECT_THAT(notes(), ElementsAre("crawl"));
}

TEST_F(WatchLoopTest, CrawlsWhenItIsAskedTo) {
  settle();
  loop_.crawlSoon();
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("crawl"));
}

TEST_F(WatchLoopTest, LeavesFilesForWhatChangesButLooksIntoSomeFirst) {
  settle();
  watch_.change("a");
  loop_.step();
  now_ += milliseconds(50);
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("apply /watched/a"));
  sink_.steps = 100;
  sink_.work = [this] {
    now_ += milliseconds(10);
    watch_.change("b");
  };
  const WatchInstant began = now_;
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("look (ended)"));
  // The batch is due after half a second of events that do not cease.
  EXPECT_EQ(now_ - began, milliseconds(510));
  sink_.steps = 0;
  loop_.step();
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("apply /watched/b", "look"));
}

TEST_F(WatchLoopTest, TriesAgainEverLaterAfterAFailureAndVouchesForNothingMeanwhile) {
  settle();
  const WatchInstant before = *loop_.vouchedUntil();
  watch_.change("a");
  loop_.step();
  sink_.failure = StoreError{StoreError::Kind::kNoSpace, "the disk is full"};
  stepAfter(milliseconds(50));
  EXPECT_THAT(notes(), ElementsAre("apply /watched/a"));
  EXPECT_EQ(loop_.failure()->reason, "the disk is full");
  for (const int wait : {1, 2, 4, 8, 16, 32, 60, 60}) {
    SCOPED_TRACE(wait);
    stepAfter(seconds(wait) - milliseconds(1));
    EXPECT_THAT(notes(), IsEmpty());
    stepAfter(milliseconds(1));
    EXPECT_THAT(notes(), ElementsAre("crawl"));
  }
  EXPECT_EQ(loop_.vouchedUntil(), before);
  sink_.failure.reset();
  loop_.crawlSoon();
  loop_.step();
  EXPECT_FALSE(loop_.failure());
  EXPECT_EQ(loop_.vouchedUntil(), now_);
}

TEST_F(WatchLoopTest, VouchesOnlyUpToWhatIsPublished) {
  settle();
  stepAfter(seconds(10));
  EXPECT_EQ(loop_.vouchedUntil(), now_);
  watch_.change("a");
  const WatchInstant before = now_;
  stepAfter(milliseconds(10));
  EXPECT_EQ(loop_.vouchedUntil(), before);
  stepAfter(milliseconds(50));
  EXPECT_EQ(loop_.vouchedUntil(), now_);
}

TEST_F(WatchLoopTest, LooksFromTimeToTimeAtWhatIsNotWatchedAndVouchesOnlyUpToThen) {
  settle();
  const WatchInstant crawled = now_;
  watch_.loseSightOf({"/watched/far"});
  stepAfter(minutes(5) - milliseconds(1));
  EXPECT_EQ(loop_.vouchedUntil(), crawled);
  EXPECT_THAT(notes(), IsEmpty());
  const int tries = watch_.triesToWatch();
  stepAfter(milliseconds(1));
  EXPECT_THAT(notes(), ElementsAre("apply tree /watched/far"));
  EXPECT_EQ(watch_.triesToWatch(), tries + 1);
  EXPECT_EQ(loop_.vouchedUntil(), now_);
}

TEST_F(WatchLoopTest, CrawlsWhenOtherNamesOfAFileCouldNotBeTold) {
  settle();
  sink_.applied = ChangeSink::Applied::kNotAllNames;
  const WatchInstant before = now_;
  watch_.change("one");
  loop_.step();
  stepAfter(milliseconds(50));
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("apply /watched/one", "look"));
  EXPECT_EQ(loop_.vouchedUntil(), before);
  stepAfter(minutes(5));
  EXPECT_THAT(notes(), ElementsAre("crawl"));
  EXPECT_EQ(loop_.vouchedUntil(), now_);
}

TEST_F(WatchLoopTest, EndsInTheMiddleOfACrawl) {
  isEnded_ = true;
  loop_.step();
  EXPECT_THAT(notes(), ElementsAre("crawl (ended)"));
  EXPECT_EQ(loop_.vouchedUntil(), std::nullopt);
}

TEST_F(WatchLoopTest, GoesOnWithNamesWhenFilesCannotBeLookedInto) {
  loop_.step();
  sink_.failure = StoreError{StoreError::Kind::kDamaged, "the catalogue is damaged"};
  loop_.step();
  EXPECT_EQ(loop_.contentFailure()->reason, "the catalogue is damaged");
  sink_.failure.reset();
  notes();
  watch_.change("a");
  loop_.step();
  stepAfter(milliseconds(50));
  EXPECT_THAT(notes(), ElementsAre("apply /watched/a"));
  stepAfter(seconds(1));
  EXPECT_THAT(notes(), ElementsAre("look"));
  EXPECT_FALSE(loop_.contentFailure());
}

TEST_F(WatchLoopTest, ReadsWhatHappensWhileItCrawls) {
  sink_.work = [this] { watch_.change("late"); };
  loop_.step();
  sink_.work = [] {};
  stepAfter(milliseconds(50));
  EXPECT_THAT(notes(), ElementsAre("crawl", "apply /watched/late"));
}

}  // namespace
}  // namespace vt
