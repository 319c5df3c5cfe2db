#include "metadata/store/Segment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "foundation/TextFolding.h"
#include "metadata/store/RowsByFolder.h"
#include "metadata/store/SegmentVerifier.h"
#include "metadata/store/StoredFiles.h"

namespace vt {
namespace {

std::string pathOf(const SegmentColumns& columns, std::size_t row) {
  std::string path(columns.name(row));
  for (std::uint32_t at = columns.folderOf(row); at != 0; at = columns.parents[at]) {
    path = std::string(columns.folderNames[at]) + "/" + path;
  }
  return "/" + path;
}

void expectRow(const Segment& segment, std::size_t row, const StoredFiles::File& file) {
  const SegmentColumns& columns = segment.columns();
  ASSERT_EQ(pathOf(columns, row), file.path);
  EXPECT_EQ(columns.foldedNames[row], foldText(file.name, Folding::kCaseAndMarks));
  EXPECT_EQ(columns.modifiedOf(row), file.status.modified);
  EXPECT_EQ(columns.createdOf(row), file.status.created);
  EXPECT_EQ(columns.attributesChangedOf(row), file.status.attributesChanged);
  EXPECT_EQ(columns.accessedOf(row), file.status.accessed);
  EXPECT_EQ(columns.sizes[row], file.status.sizeInBytes);
  EXPECT_EQ(columns.allocatedBytesOf(row), file.status.allocatedBytes);
  EXPECT_EQ(columns.typeIdentifiers[columns.typeOf(row)], file.type);
  const std::uint32_t number = columns.classOf(row);
  EXPECT_EQ(columns.classes[number].ownership, file.status.ownership);
  EXPECT_TRUE(std::ranges::equal(segment.aclBytesOf(number), file.acl));
  EXPECT_EQ(segment.aclPresenceOf(number),
            file.acl.empty() ? AclPresence::kNone : AclPresence::kPresent);
  EXPECT_EQ(columns.ownFolderOf(row) != kNoFolder, file.isFolder);
}

TEST(Segment, GivesBackWhatWasPutInNewestFirstThenByPath) {
  for (const std::size_t count : {1U, 2U, 30U, 1500U}) {
    for (std::uint32_t seed = 1; seed <= 8; ++seed) {
      SCOPED_TRACE(testing::Message() << count << " files of seed " << seed);
      const StoredFiles files = randomFiles(seed, count);
      const SegmentFile file(files.built, 42);
      const auto segment = file.open();
      ASSERT_TRUE(segment) << segment.error().reason;
      EXPECT_EQ((*segment)->generation(), 42U);
      EXPECT_EQ((*segment)->identity(), file.identity);
      const std::vector<StoredFiles::File> expected = files.inOrder();
      ASSERT_EQ((*segment)->columns().rowCount(), expected.size());
      for (std::size_t row = 0; row < expected.size(); ++row) {
        expectRow(**segment, row, expected[row]);
        ASSERT_FALSE(HasFailure()) << "row " << row;
      }
      const auto damage = verifySegment(**segment);
      EXPECT_FALSE(damage) << damage->reason;
    }
  }
}

TEST(Segment, GivesBackWhatIsKnownOfFolders) {
  const StoredFiles files = randomFiles(7, 400);
  const auto segment = SegmentFile(files.built).open().value();
  const SegmentColumns& columns = segment->columns();
  ASSERT_EQ(columns.folderCount(), files.folders.size());
  const RowsByFolder rows(columns);
  std::map<std::string, std::size_t> entries;
  for (const StoredFiles::File& file : files.files) {
    ++entries[file.path.substr(0, file.path.size() - file.name.size())];
  }
  for (const StoredFiles::Folder& folder : files.folders) {
    SCOPED_TRACE(folder.path);
    EXPECT_EQ(segment->stampOf(folder.number), folder.stamp);
    EXPECT_EQ(columns.areListed[folder.number], folder.isListed ? 1 : 0);
    EXPECT_EQ(columns.areRoots[folder.number], folder.path == "/" ? 1 : 0);
    EXPECT_EQ(columns.entryCounts[folder.number], entries[folder.path]);
    EXPECT_EQ(rows[folder.number].size(), entries[folder.path]);
    for (const std::uint32_t row : rows[folder.number]) {
      EXPECT_EQ(columns.folderOf(row), folder.number);
    }
    const std::uint32_t own = columns.folderRows[folder.number];
    ASSERT_EQ(own == kNoRow, folder.path == "/");
    if (own != kNoRow) {
      EXPECT_EQ(pathOf(columns, own) + "/", folder.path);
    }
  }
}

TEST(Segment, HoldsAnEmptyTree) {
  StoredFiles files;
  const SegmentFile file(files.built);
  const auto segment = file.open();
  ASSERT_TRUE(segment) << segment.error().reason;
  EXPECT_EQ((*segment)->columns().rowCount(), 0U);
  EXPECT_EQ((*segment)->columns().folderCount(), 1U);
  EXPECT_FALSE(verifySegment(**segment));
}

TEST(Segment, HoldsNothingAtAll) {
  const SegmentBuilder built(storedTypes());
  const SegmentFile file(built);
  const auto segment = file.open();
  ASSERT_TRUE(segment) << segment.error().reason;
  EXPECT_EQ((*segment)->columns().folderCount(), 0U);
  EXPECT_FALSE(verifySegment(**segment));
}

TEST(Segment, RefusesAFileWhoseListMakesNoSense) {
  StoredFiles files;
  files.add(0, "a", StoredFiles::plain(1), {1, 2, 3});
  const auto segment = SegmentFile(files.built).open().value();
  const std::uint32_t number = segment->columns().classOf(0);
  EXPECT_FALSE(segment->columns().classes[number].acl.isKnown);
}

TEST(Segment, StaysGoodWhenItsFileGoes) {
  const StoredFiles files = randomFiles(3, 100);
  std::shared_ptr<const Segment> segment;
  {
    const SegmentFile file(files.built);
    segment = file.open().value();
  }
  EXPECT_FALSE(verifySegment(*segment));
}

TEST(Segment, IsNotOpenedFromWhatIsNoPlainFile) {
  const TemporaryFolder place;
  const Descriptor folder(::open(place.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(::mkfifo((place / "pipe").c_str(), 0600), 0);
  ASSERT_EQ(::symlink("pipe", (place / "link").c_str()), 0);
  writeFile(place / "empty", "");
  EXPECT_EQ(Segment::open(folder.get(), "pipe", "p").error().kind, StoreError::Kind::kDamaged);
  EXPECT_FALSE(Segment::open(folder.get(), "link", "l"));
  EXPECT_EQ(Segment::open(folder.get(), "empty", "e").error().kind, StoreError::Kind::kDamaged);
  const auto none = Segment::open(folder.get(), "none", "/index/none");
  EXPECT_EQ(none.error().kind, StoreError::Kind::kMissing);
  EXPECT_EQ(none.error().reason, "cannot open /index/none: No such file or directory");
}

}  // namespace
}  // namespace vt
