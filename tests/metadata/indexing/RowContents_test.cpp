#include "metadata/indexing/RowContents.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "metadata/extract/Extractors.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

constexpr SegmentIdentity kEarlier{.headChecksum = 17};
constexpr SegmentIdentity kOther{.headChecksum = 18};

class RowContentsTest : public testing::Test {
 protected:
  /// A file as recordOf() has it, with its inode changed at `changed`.
  CrawledEntry entry(const char* name, std::uint64_t inode, std::int64_t changed,
                     bool isUnchanged) const {
    CrawledEntry made;
    made.name = name;
    made.type = types_.typeOfFile(name);
    made.status.ownership.mode = S_IFREG;
    made.status.device = 7;
    made.status.inode = inode;
    made.status.modified = Date{std::chrono::microseconds{1'000'000}};
    made.status.sizeInBytes = 10;
    made.status.attributesChanged = Date{std::chrono::microseconds{changed}};
    made.isUnchanged = isUnchanged;
    return made;
  }

  ContentNumber add(std::uint64_t inode, const char* extractor, std::int64_t changed) {
    ContentRecord record = CatalogueInFolder::recordOf(inode);
    record.extractor = extractor;
    record.extractorVersion = extractors_.forType(types_.typeOfFile("a.txt"))->version();
    record.version.attributesChanged = changed;
    return valueOrThrow(writer_->add(record, Extraction()));
  }

  /// The contents of the entries, and which of them are to be looked at.
  std::pair<std::vector<ContentNumber>, std::vector<std::uint32_t>> of(
      const std::vector<CrawledEntry>& entries) {
    RowContents contents = valueOrThrow(RowContents::of(*writer_, extractors_, {&kEarlier, 1}));
    std::vector<std::uint32_t> rows;
    for (const CrawledEntry& each : entries) {
      contents.add(each);
      rows.push_back(static_cast<std::uint32_t>(rows.size()));
    }
    return {contents.contentsOf(rows), contents.withUnseenAttributes(rows)};
  }

  using Contents = std::vector<ContentNumber>;
  using Rows = std::vector<std::uint32_t>;

  const ContentTypes types_ = shippedTypes();
  const Extractors extractors_ = builtInExtractors(types_);
  CatalogueInFolder folder_;
  std::unique_ptr<CatalogueWriter> writer_ = folder_.writer();
};

TEST_F(RowContentsTest, LooksAtFilesThatNobodyLooksIntoOnceAndWhenTheyHaveChanged) {
  const std::vector<CrawledEntry> entries = {entry("known.jpg", 1, 5, /*isUnchanged=*/true),
                                             entry("new.jpg", 2, 5, /*isUnchanged=*/false)};
  EXPECT_EQ(of(entries), std::pair(Contents(2, kWithoutContent), (Rows{0, 1})));
  throwIf(writer_->setSeenAttributesOf({&kEarlier, 1}));
  EXPECT_EQ(of(entries), std::pair(Contents(2, kWithoutContent), Rows{1}));
  throwIf(writer_->setSeenAttributesOf({&kOther, 1}));
  EXPECT_EQ(of(entries), std::pair(Contents(2, kWithoutContent), (Rows{0, 1})));
}

TEST_F(RowContentsTest, LooksAtFilesThatAreKnownWhenTheirInodeHasChanged) {
  throwIf(writer_->setSeenAttributesOf({&kEarlier, 1}));
  const ContentNumber text = add(1, "text", 5);
  const ContentNumber tagged = add(2, "", 5);
  const ContentNumber neverSeen = add(3, "text", 0);
  const auto entries = [&](std::int64_t changed) {
    return std::vector<CrawledEntry>{entry("one.txt", 1, changed, /*isUnchanged=*/false),
                                     entry("two.jpg", 2, changed, /*isUnchanged=*/false),
                                     entry("three.txt", 3, changed, /*isUnchanged=*/true)};
  };
  EXPECT_EQ(of(entries(5)), std::pair((Contents{text, tagged, neverSeen}), Rows{2}));
  EXPECT_EQ(of(entries(6)), std::pair((Contents{text, tagged, neverSeen}), (Rows{0, 1, 2})));
}

TEST_F(RowContentsTest, LeavesWhatIsToBeLookedIntoToThat) {
  add(1, "another", 5);
  EXPECT_EQ(of({entry("one.txt", 1, 6, /*isUnchanged=*/false),
                entry("two.txt", 2, 6, /*isUnchanged=*/false)}),
            std::pair(Contents(2, kPendingContent), Rows{}));
}

}  // namespace
}  // namespace vt
