#include "metadata/store/WatcherRecord.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "metadata/store/IndexFreshness.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

WatcherRecord aRecord() {
  WatcherRecord record;
  record.generation = 12;
  record.seenUntil = {"a0f8", std::chrono::microseconds(1'234'567)};
  record.process = 4711;
  record.watch = "inotify";
  record.why = "fanotify cannot be used: Operation not permitted";
  record.unit = "folders";
  record.watched = 17;
  record.unwatched = 3;
  record.whyUnwatched = "there are no more watches";
  record.waiting = 5;
  record.overflows = 1;
  record.lastBatch = Date(std::chrono::microseconds(1'795'219'200'123'456));
  record.lastBatchSize = 7;
  record.lastBatchSeconds = 0.25;
  record.failure = "cannot write /index/segment-13: No space left on device";
  record.contentFailure = "the catalogue is damaged";
  record.isMerging = 1;
  record.mergeFailure = "cannot write /index/merged.tmp: No space left on device";
  return record;
}

TEST(WatcherRecord, IsReadAsItWasWritten) {
  const TemporaryFolder folder;
  for (const WatcherRecord& record : {aRecord(), WatcherRecord()}) {
    ASSERT_FALSE(writeWatcherRecord(folder.path(), record));
    const auto read = readWatcherRecord(folder.path());
    ASSERT_TRUE(read) << read.error().reason;
    EXPECT_EQ(*read, record);
  }
}

TEST(WatcherRecord, IsForItsOwnerAlone) {
  const TemporaryFolder folder;
  ASSERT_FALSE(writeWatcherRecord(folder.path(), aRecord()));
  struct stat status{};
  ASSERT_EQ(stat((folder / "watcher").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST(WatcherRecord, HoldsReasonsWithNamesOfAnyBytes) {
  WatcherRecord record = aRecord();
  record.whyUnwatched = "/a\x01\xff\n (nfs)";
  const auto read = parseWatcherRecord(printWatcherRecord(record), "watcher");
  ASSERT_TRUE(read) << read.error().reason;
  EXPECT_EQ(read->whyUnwatched, "/a \xEF\xBF\xBD  (nfs)");
  EXPECT_EQ(read->seenUntil, record.seenUntil);
}

TEST(WatcherRecord, IsMissingBeforeTheFirst) {
  const TemporaryFolder folder;
  EXPECT_EQ(readWatcherRecord(folder.path()).error().kind, StoreError::Kind::kMissing);
}

TEST(WatcherRecord, IsDamagedWhenAnythingIsMissing) {
  const std::string whole = printWatcherRecord(aRecord());
  for (std::size_t length = 0; length + 1 < whole.size(); ++length) {
    const auto read = parseWatcherRecord(whole.substr(0, length), "watcher");
    ASSERT_FALSE(read) << length;
    ASSERT_EQ(read.error().kind, StoreError::Kind::kDamaged);
  }
  const char* const wrong[] = {
      "<plist><dict/></plist>", "<plist><array/></plist>",
      "<plist><dict><key>generation</key><string>1</string></dict></plist>"};
  for (const char* text : wrong) EXPECT_FALSE(parseWatcherRecord(text, "watcher")) << text;
}

TEST(WatcherRecord, ReportsWhatTheSystemRefuses) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "watcher.tmp");
  EXPECT_TRUE(writeWatcherRecord(folder.path(), aRecord()));
}

TEST(BootInstant, GoesOnWithinOneStartOfTheMachine) {
  const BootInstant first = BootInstant::now();
  const BootInstant second = BootInstant::now();
  EXPECT_EQ(first.boot.size(), 36U);
  EXPECT_EQ(first.boot, second.boot);
  EXPECT_LE(first.since, second.since);
}

TEST(IndexFreshness, IsVouchedForByARecordOfLittleAge) {
  const BootInstant now{"boot", std::chrono::hours(100)};
  struct Case {
    const char* what;
    std::uint64_t generation;
    const char* boot;
    std::chrono::microseconds since;
    bool isVouched;
  };
  const auto limit = now.since - kIndexIsFreshFor;
  const Case cases[] = {
      {"this moment", 5, "boot", now.since, true},
      {"the oldest that counts", 5, "boot", limit, true},
      {"older by the least", 5, "boot", limit - std::chrono::microseconds(1), false},
      {"an earlier generation, whose changes are in this one too", 4, "boot", now.since, true},
      {"a later generation, which this one is not", 6, "boot", now.since, false},
      {"another start of the machine", 5, "other", now.since, false},
      {"a time to come", 5, "boot", now.since + std::chrono::microseconds(1), false},
  };
  Manifest manifest;
  manifest.generation = 5;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    WatcherRecord record;
    record.generation = c.generation;
    record.seenUntil = {c.boot, c.since};
    EXPECT_EQ(isVouchedFor(manifest, record, now), c.isVouched);
  }
  WatcherRecord unknown;
  unknown.seenUntil = {"", now.since};
  EXPECT_FALSE(isVouchedFor(manifest, unknown, {"", now.since}));
}

}  // namespace
}  // namespace vt
