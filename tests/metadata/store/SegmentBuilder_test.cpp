#include "metadata/store/SegmentBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "metadata/store/FaultyCalls.h"
#include "metadata/store/SegmentContents.h"
#include "metadata/store/SegmentVerifier.h"
#include "metadata/store/StoredFiles.h"

namespace vt {
namespace {

using testing::HasSubstr;

SegmentEntry entryNamed(std::string_view name) {
  return {.name = name, .status = StoredFiles::plain(1), .folder = 0};
}

TEST(SegmentBuilder, NumbersEachAccessClassOnce) {
  SegmentBuilder builder(storedTypes());
  const std::vector<std::uint8_t> list = aclBytes({{1, 6}, {4, 4}, {32, 0}});
  const FileOwnership owner{1, 2, S_IFREG | 0640};
  const FileOwnership others[] = {{2, 2, S_IFREG | 0640},
                                  {1, 3, S_IFREG | 0640},
                                  {1, 2, S_IFREG | 0600},
                                  {1, 2, S_IFDIR | 0640}};
  std::vector<std::uint32_t> numbers = {builder.addClass(owner, AclPresence::kNone, {}),
                                        builder.addClass(owner, AclPresence::kNotKept, {}),
                                        builder.addClass(owner, AclPresence::kUnknown, {}),
                                        builder.addClass(owner, AclPresence::kPresent, list),
                                        builder.addClass(owner, AclPresence::kPresent, {})};
  for (const FileOwnership& other : others) {
    numbers.push_back(builder.addClass(other, AclPresence::kNone, {}));
  }
  for (std::uint32_t number = 0; number < numbers.size(); ++number) {
    EXPECT_EQ(numbers[number], number);
  }
  EXPECT_EQ(builder.addClass(owner, AclPresence::kPresent, list), 3U);
  EXPECT_EQ(builder.addClass(owner, AclPresence::kNone, list), 0U);  // there is no list
  EXPECT_EQ(builder.classCount(), numbers.size());
}

TEST(SegmentBuilder, LeavesOutNamesThatNoFileCanHave) {
  StoredFiles files;
  for (const std::string& name :
       {std::string(), std::string("a/b"), std::string("a\0b", 3), std::string(4096, 'x')}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(files.built.addRow(entryNamed(name)));
    EXPECT_FALSE(files.built.isFull());
  }
  EXPECT_TRUE(files.built.addRow(entryNamed(std::string(4095, 'x'))));
  EXPECT_EQ(files.built.rowCount(), 1U);
}

TEST(SegmentBuilder, IsFullWithMoreThanASegmentHolds) {
  SegmentBuilder rows(storedTypes(), {.rows = 2});
  rows.addFolder(kNoFolder, "", rows.addClass({}, AclPresence::kNone, {}));
  EXPECT_TRUE(rows.addRow(entryNamed("a")));
  EXPECT_TRUE(rows.addRow(entryNamed("b")));
  EXPECT_FALSE(rows.isFull());
  EXPECT_FALSE(rows.addRow(entryNamed("c")));
  EXPECT_TRUE(rows.isFull());

  SegmentBuilder folders(storedTypes(), {.folders = 1});
  folders.addFolder(kNoFolder, "", 0);
  folders.addFolder(0, "a", 0);
  EXPECT_TRUE(folders.isFull());
  EXPECT_FALSE(folders.addRow(entryNamed("c")));
}

TEST(SegmentBuilder, RefusesToWriteMoreThanASegmentHolds) {
  struct Case {
    const char* what;
    SegmentBuilder::Limits limits;
    bool isRefused;
  };
  const Case cases[] = {
      {"just enough text", {.textBytes = 12}, false},  // the name and its end
      {"too much text", {.textBytes = 11}, true},
      {"too many rows", {.rows = 0}, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    SegmentBuilder builder(storedTypes(), c.limits);
    builder.addFolder(kNoFolder, "", builder.addClass({}, AclPresence::kNone, {}));
    const bool isAdded = builder.addRow(entryNamed("ccccccccccc"));
    EXPECT_EQ(isAdded, c.limits.rows > 0);
    const TemporaryFolder place;
    const Descriptor folder(::open(place.path().c_str(), O_RDONLY | O_DIRECTORY));
    const Descriptor file(StoreCalls::system().create(folder.get(), "segment"));
    FileWriter writer(StoreCalls::system(), file.get(), "segment");
    const auto written = builder.write(writer, 1);
    EXPECT_EQ(!written, c.isRefused);
    if (c.isRefused) {
      EXPECT_EQ(written.error().kind, StoreError::Kind::kTooLarge);
    }
  }
}

TEST(SegmentBuilder, OrdersManyFilesOfOneDateByPath) {
  StoredFiles files;
  for (int folder = 0; folder < 30; ++folder) {
    files.addFolder(static_cast<std::size_t>(folder / 3), "f" + std::to_string(folder), 5);
  }
  for (int file = 0; file < 3000; ++file) {
    files.add(static_cast<std::size_t>(file % 31), std::to_string(file * 7919 % 3001), 5);
  }
  const auto segment = SegmentFile(files.built).open().value();
  const auto damage = verifySegment(*segment);
  EXPECT_FALSE(damage) << damage->reason;
  const std::vector<StoredFiles::File> sorted = files.inOrder();
  for (std::size_t row = 0; row < sorted.size(); ++row) {
    ASSERT_EQ(segment->columns().name(row), sorted[row].name);
  }
}

/// So many rows that two threads write them, with dates and names that few others have.
SegmentBuilder manyRows() {
  SegmentBuilder built(storedTypes());
  built.addFolder(kNoFolder, "", built.addClass({}, AclPresence::kNone, {}));
  std::mt19937 random(7);
  for (std::uint32_t row = 0; row < SegmentContents::kLeastRowsForTwoThreads + 1; ++row) {
    std::string name = (row % 3 == 0 ? "Ab" : "ab") + std::to_string(row);
    if (row % 7 == 0) name += "\xc3\x9c";
    SegmentEntry entry = entryNamed(name);
    entry.folder = 0;
    entry.status.modified = Date{std::chrono::microseconds{random() % 40'000}};
    entry.status.sizeInBytes = row;
    entry.status.allocatedBytes = row % 11 == 0 ? 1 : 512;
    if (!built.addRow(entry)) throw std::runtime_error("not added");
  }
  return built;
}

TEST(SegmentBuilder, WritesManyRowsAsItDoesFew) {
  const SegmentBuilder built = manyRows();
  const auto segment = SegmentFile(built).open().value();
  const auto damage = verifySegment(*segment);
  EXPECT_FALSE(damage) << damage->reason;
  const SegmentColumns& columns = segment->columns();
  ASSERT_EQ(columns.rowCount(), SegmentContents::kLeastRowsForTwoThreads + 1);
  for (std::size_t row = 0; row < columns.rowCount(); ++row) {
    // The size of each is its number, and that is in its name.
    ASSERT_THAT(std::string(columns.name(row)), HasSubstr(std::to_string(columns.sizes[row])));
    ASSERT_EQ(columns.allocatedBytesOf(row), columns.sizes[row] % 11 == 0 ? 1U : 512U);
  }
}

TEST(SegmentBuilder, WritesTheSameWhetherItReleasesItsMemoryOrNot) {
  SegmentBuilder built = manyRows();
  const std::string kept = SegmentFile(built).bytes;
  EXPECT_EQ(SegmentFile(built).bytes, kept);
  built.releaseWhenWritten();
  EXPECT_EQ(SegmentFile(built).bytes, kept);
}

TEST(SegmentBuilder, TellsOfAnyWriteOfManyRowsThatFails) {
  const SegmentBuilder built = manyRows();
  const TemporaryFolder place;
  const Descriptor folder(::open(place.path().c_str(), O_RDONLY | O_DIRECTORY));
  int failures = 0;
  for (bool isDone = false; !isDone; ++failures) {
    SCOPED_TRACE(failures);
    FailingCalls calls;
    const std::string name = "segment" + std::to_string(failures);
    const Descriptor file(calls.create(folder.get(), name.c_str()));
    calls.calls = 0;
    calls.failsAt = failures;
    FileWriter writer(calls, file.get(), name);
    const auto written = built.write(writer, 1);
    isDone = *calls.failed == '\0';
    EXPECT_EQ(written.hasValue(), isDone);
    if (!isDone) {
      EXPECT_EQ(written.error().kind, StoreError::Kind::kFailed);
    }
  }
  // The head, the names, the numbers and the head again.
  EXPECT_GT(failures, 4);
}

}  // namespace
}  // namespace vt
