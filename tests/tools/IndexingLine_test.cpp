#include "vistaro/IndexingLine.h"

#include <gtest/gtest.h>

namespace vt::tool {
namespace {

IndexingProgress after(double seconds, std::uint64_t entries) {
  IndexingProgress progress;
  progress.crawled.folders = 3;
  progress.crawled.entries = entries;
  progress.elapsed = std::chrono::duration<double>(seconds);
  return progress;
}

TEST(IndexingLine, TellsCountsAndRate) {
  EXPECT_EQ(indexingLine(after(2, 1000)), "indexing: 3 folders, 1000 files, 500 a second");
}

TEST(IndexingLine, TellsTheTimeThatIsLeftWhereItIsKnownHowMuchThereWas) {
  IndexingProgress progress = after(2, 1000);
  progress.expectedEntries = 2200;
  EXPECT_EQ(indexingLine(progress),
            "indexing: 3 folders, 1000 files, 500 a second, about 3 s left");
}

TEST(IndexingLine, TellsNoTimeWhenThereIsMoreThanThereWas) {
  IndexingProgress progress = after(2, 1000);
  progress.expectedEntries = 1000;
  EXPECT_EQ(indexingLine(progress), "indexing: 3 folders, 1000 files, 500 a second");
}

TEST(IndexingLine, TellsNoRateBeforeAnythingWasFound) {
  EXPECT_EQ(indexingLine(after(2, 0)), "indexing: 3 folders, 0 files");
  EXPECT_EQ(indexingLine(after(0, 7)), "indexing: 3 folders, 7 files");
}

TEST(IndexingLine, TellsHowManyFilesWereLookedInto) {
  IndexingProgress progress = after(2, 1000);
  progress.isPublishing = true;
  progress.contents.emplace();
  progress.contents->expected = 70;
  progress.contents->done = 3;
  EXPECT_EQ(indexingLine(progress), "looking into files: 3 of 70");
}

TEST(IndexingLine, TellsOfTheWriting) {
  IndexingProgress progress = after(2, 1000);
  progress.isPublishing = true;
  EXPECT_EQ(indexingLine(progress), "writing the index of 1000 files");
}

}  // namespace
}  // namespace vt::tool
