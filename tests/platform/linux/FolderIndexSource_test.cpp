#include "platform/linux/FolderIndexSource.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveTree.h"
#include "metadata/store/IndexFreshness.h"
#include "metadata/types/ShippedTypes.h"
#include "support/Places.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

using testing::HasSubstr;

class FolderIndexSourceTest : public testing::Test {
 protected:
  FolderIndexSourceTest() { tree_.file("one.txt"); }

  Date publish() { return indexed_.run({tree_.path()}).manifest.began; }
  std::size_t rows(Date now) {
    source_.refresh();
    const std::shared_ptr<const OpenIndex> open = source_.freshAt(now);
    return open ? open->columns.entryCount() : 0;
  }
  std::string whyNot(Date now) {
    source_.refresh();
    EXPECT_EQ(source_.freshAt(now), nullptr);
    return source_.whyNotAt(now);
  }

  std::shared_ptr<const ContentTypes> types_ = std::make_shared<const ContentTypes>(shippedTypes());
  LiveTree tree_;
  IndexedTree indexed_{*types_};
  FolderIndexSource source_{indexed_.path(), types_};
};

TEST_F(FolderIndexSourceTest, SaysThatThereIsNone) {
  EXPECT_EQ(whyNot(Date()), "there is no index");
  FolderIndexSource nowhere(tree_ / "nowhere", types_);
  nowhere.refresh();
  EXPECT_EQ(nowhere.whyNotAt(Date()), "there is no index");
}

TEST_F(FolderIndexSourceTest, OpensEachNewGeneration) {
  EXPECT_EQ(rows(publish()), 1U);
  tree_.file("two.txt");
  EXPECT_EQ(rows(publish()), 2U);
}

TEST_F(FolderIndexSourceTest, KeepsWhatIsOpenWhileThereIsNothingNewer) {
  const Date began = publish();
  source_.refresh();
  const auto first = source_.freshAt(began);
  source_.refresh();
  EXPECT_EQ(source_.freshAt(began), first);
}

TEST_F(FolderIndexSourceTest, IsFreshForAQuarterOfAnHourFromTheBeginningOfTheCrawl) {
  const Date began = publish();
  EXPECT_EQ(rows(began + kIndexIsFreshFor), 1U);
  EXPECT_EQ(whyNot(began + kIndexIsFreshFor + std::chrono::microseconds(1)),
            "the index is 15 minutes old");
}

TEST_F(FolderIndexSourceTest, IsFreshWhileAWatcherVouchesForIt) {
  const Date later = publish() + std::chrono::hours(30);
  EXPECT_EQ(rows(later), 0U);
  WatcherRecord record;
  record.generation = 1;
  record.seenUntil = BootInstant::now();
  ASSERT_FALSE(writeWatcherRecord(indexed_.path(), record));
  EXPECT_EQ(rows(later), 1U);
  record.seenUntil.since -= kIndexIsFreshFor;
  ASSERT_FALSE(writeWatcherRecord(indexed_.path(), record));
  EXPECT_EQ(whyNot(later), "the index is 1800 minutes old");
}

TEST_F(FolderIndexSourceTest, DistrustsAnIndexOfTheFuture) {
  const Date began = publish();
  EXPECT_EQ(rows(began - kClockTolerance), 1U);
  EXPECT_EQ(whyNot(began - kClockTolerance - std::chrono::microseconds(1)),
            "the index is from the future: the clock was set back");
}

TEST_F(FolderIndexSourceTest, GoesOnWithTheLastGenerationWhenTheNewestIsDamaged) {
  const Date began = publish();
  EXPECT_EQ(rows(began), 1U);
  tree_.file("two.txt");
  publish();
  std::filesystem::resize_file(indexed_.path() + "/segment-2", 100);
  EXPECT_EQ(rows(began), 1U);
  EXPECT_THAT(whyNot(began + kIndexIsFreshFor * 2), HasSubstr("segment-2"));
  EXPECT_EQ(rows(publish()), 2U);
}

TEST_F(FolderIndexSourceTest, SaysWhatIsDamagedWhenNothingIsOpen) {
  const Date began = publish();
  std::ofstream(indexed_.path() + "/manifest", std::ios::app) << "x";
  EXPECT_THAT(whyNot(began), HasSubstr("manifest is damaged"));
}

TEST_F(FolderIndexSourceTest, RefusesAFolderThatOthersMayEnter) {
  const Date began = publish();
  std::filesystem::permissions(indexed_.path(), std::filesystem::perms(0755));
  EXPECT_THAT(whyNot(began), HasSubstr("has mode 0755"));
}

TEST_F(FolderIndexSourceTest, RefusesTypesThatTheTableLacks) {
  const auto more = ContentTypes::parse(readFile(resourcePath("types.tsv")) +
                                        "org.example.thing\tpublic.data\tthing\t\tThing\t\n");
  ASSERT_TRUE(more) << more.error().reason;
  tree_.file("a.thing");
  IndexedTree indexed(tree_.path(), *more);
  FolderIndexSource source(indexed.path(), types_);
  source.refresh();
  const Date began = indexed.generation().manifest.began;
  EXPECT_EQ(source.freshAt(began), nullptr);
  EXPECT_EQ(source.whyNotAt(began), "the index was made with types that are not known here");
}

}  // namespace
}  // namespace vt
