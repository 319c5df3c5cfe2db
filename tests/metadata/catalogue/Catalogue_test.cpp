#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "metadata/catalogue/CatalogueInFolder.h"

namespace vt {
namespace {

using Numbers = std::vector<std::size_t>;

Numbers numbersOf(const Result<Bitmap, StoreError>& found) {
  Numbers numbers;
  if (!found) throw std::runtime_error(found.error().reason);
  found->forEach([&](std::size_t number) { numbers.push_back(number); });
  return numbers;
}

class Catalogue : public testing::Test {
 protected:
  ContentNumber add(std::uint64_t inode, const Extraction& extraction) {
    return valueOrThrow(writer_->add(CatalogueInFolder::recordOf(inode), extraction));
  }
  std::vector<ContentRecord> records() {
    std::vector<ContentRecord> found;
    throwIf(writer_->forEach([&](const ContentRecord& record) { found.push_back(record); }));
    return found;
  }

  CatalogueInFolder folder_;
  std::unique_ptr<CatalogueWriter> writer_ = folder_.writer();
};

TEST_F(Catalogue, KnowsFilesByDeviceAndInode) {
  add(1, textAlone("one"));
  ContentRecord large = CatalogueInFolder::recordOf(0xFFFFFFFFFFFFFFFF);
  large.version = {.modified = -5, .sizeInBytes = 0xFFFFFFFFFFFFFFFF};
  valueOrThrow(writer_->add(large, Extraction()));
  const std::vector<ContentRecord> found = records();
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].identity, (ContentIdentity{7, 1}));
  EXPECT_EQ(found[0].extractor, "text");
  EXPECT_TRUE(found[0].hasText);
  EXPECT_EQ(found[1].identity, large.identity);
  EXPECT_EQ(found[1].version, large.version);
  EXPECT_FALSE(found[1].hasText);
  EXPECT_FALSE(found[1].failure);
}

TEST_F(Catalogue, GivesANewNumberForEachLookAndForgetsTheOneBefore) {
  EXPECT_EQ(add(1, textAlone("old")), 1U);
  EXPECT_EQ(add(1, textAlone("new")), 2U);
  throwIf(writer_->commit());
  EXPECT_EQ(records().size(), 1U);
  EXPECT_EQ(numbersOf(folder_.reader()->withText(10)), Numbers{2});
}

TEST_F(Catalogue, ReplacesExtendedAttributesAloneUnderTheSameNumber) {
  Extraction extraction = textAlone("words");
  extraction.attributes["kMDItemTitle"] = "Plan";
  extraction.attributes["kMDItemUserTags"] = Array::make({"old"});
  extraction.attributes["kMDItemFinderComment"] = "old";
  const ContentNumber number = add(1, extraction);
  const ContentNumber other = add(2, extraction);
  throwIf(writer_->setExtendedAttributes(number, 7, {{"kMDItemUserTags", Array::make({"new"})}}));
  throwIf(writer_->commit());
  EXPECT_EQ(records()[0].version.attributesChanged, 7);
  EXPECT_EQ(records()[1].version.attributesChanged, 0);
  const auto reader = folder_.reader();
  EXPECT_EQ(valueOrThrow(reader->attribute(number, "kMDItemUserTags")),
            Value(Array::make({"new"})));
  EXPECT_TRUE(valueOrThrow(reader->attribute(number, "kMDItemFinderComment")).isNull());
  EXPECT_EQ(valueOrThrow(reader->attribute(number, "kMDItemTitle")), Value("Plan"));
  EXPECT_EQ(valueOrThrow(reader->attribute(other, "kMDItemFinderComment")), Value("old"));
  EXPECT_EQ(numbersOf(reader->withText(3)), (Numbers{1, 2}));
}

TEST_F(Catalogue, KnowsOfWhichSegmentAllAttributesWereSeen) {
  const SegmentIdentity first{.headChecksum = 1};
  const SegmentIdentity second{.headChecksum = 0xFFFFFFFFFFFFFFFF};
  EXPECT_FALSE(valueOrThrow(writer_->hasSeenAttributesOf({&first, 1})));
  throwIf(writer_->setSeenAttributesOf({&first, 1}));
  EXPECT_TRUE(valueOrThrow(writer_->hasSeenAttributesOf({&first, 1})));
  throwIf(writer_->setSeenAttributesOf({&second, 1}));
  EXPECT_TRUE(valueOrThrow(writer_->hasSeenAttributesOf({&second, 1})));
  EXPECT_FALSE(valueOrThrow(writer_->hasSeenAttributesOf({&first, 1})));
}

TEST_F(Catalogue, NeverGivesANumberTwice) {
  const ContentNumber last = add(1, textAlone("text"));
  throwIf(writer_->remove(std::vector{last}));
  throwIf(writer_->commit());
  EXPECT_EQ(add(1, textAlone("text")), last + 1);
}

TEST_F(Catalogue, FindsWordsAndAttributes) {
  Extraction first = textAlone("The budget");
  first.attributes["kMDItemTitle"] = "Plan";
  first.attributes["kMDItemPixelWidth"] = 640;
  Extraction second;
  second.attributes["kMDItemAuthors"] = Array::make({"Ada", "Grace"});
  second.attributes["kMDItemPixelWidth"] = 1920;
  add(1, first);
  add(2, second);
  throwIf(writer_->commit());
  const auto reader = folder_.reader();
  const ContentNumber end = valueOrThrow(reader->end());
  EXPECT_EQ(end, 3U);
  EXPECT_EQ(numbersOf(reader->withWords(contentQueryOf("budget", 0), end)), Numbers{1});
  EXPECT_EQ(numbersOf(reader->withAttribute(
                "kMDItemPixelWidth", end,
                [](const Value& value) { return value.integerValue() > 1000; })),
            Numbers{2});
  EXPECT_EQ(
      numbersOf(reader->withAttribute("kMDItemNothing", end, [](const Value&) { return true; })),
      Numbers{});
  EXPECT_EQ(valueOrThrow(reader->attribute(1, "kMDItemTitle")), Value("Plan"));
  EXPECT_EQ(valueOrThrow(reader->attribute(2, "kMDItemAuthors")),
            Value(Array::make({"Ada", "Grace"})));
  EXPECT_TRUE(valueOrThrow(reader->attribute(2, "kMDItemTitle")).isNull());
  EXPECT_EQ(valueOrThrow(reader->attributeNames()),
            (std::vector<std::string>{"kMDItemAuthors", "kMDItemPixelWidth", "kMDItemTitle"}));
}

TEST_F(Catalogue, ForgetsAttributesWithTheirContent) {
  Extraction extraction;
  extraction.attributes["kMDItemTitle"] = "Plan";
  const ContentNumber number = add(1, extraction);
  throwIf(writer_->remove(std::vector{number}));
  throwIf(writer_->commit());
  const auto reader = folder_.reader();
  EXPECT_TRUE(valueOrThrow(reader->attribute(number, "kMDItemTitle")).isNull());
  EXPECT_EQ(valueOrThrow(reader->counts()).attributes, 0U);
}

TEST_F(Catalogue, RemembersWhyAFileCouldNotBeLookedInto) {
  ContentRecord record = CatalogueInFolder::recordOf(1);
  record.failure = ExtractionFailure{ExtractionFailure::Kind::kTimedOut, "it took too long"};
  record.path = "/data/\xFF.txt";
  valueOrThrow(writer_->add(record, Extraction()));
  throwIf(writer_->commit());
  ASSERT_TRUE(records()[0].failure);
  EXPECT_EQ(records()[0].failure->kind, ExtractionFailure::Kind::kTimedOut);
  const auto failures = valueOrThrow(folder_.reader()->failures(10));
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].failure->reason, "it took too long");
  EXPECT_EQ(failures[0].path, record.path);
  EXPECT_EQ(valueOrThrow(folder_.reader()->counts()).failures, 1U);
}

TEST_F(Catalogue, SaysWhichContentEachRowHasForTwoSegmentsAtMost) {
  const SegmentIdentity segments[] = {{1, 0xF000000000000001}, {1, 2}, {1, 3}};
  const std::vector<ContentNumber> rows = {5, kWithoutContent, kPendingContent};
  throwIf(writer_->setRows(segments[0], rows));
  throwIf(writer_->setRows(segments[1], rows));
  throwIf(writer_->keepRowsOf(std::span(segments).first(2)));
  throwIf(writer_->commit());
  EXPECT_EQ(valueOrThrow(folder_.reader()->rowsOf(segments[0], 3)), rows);
  EXPECT_EQ(valueOrThrow(folder_.reader()->rowsOf(segments[1], 3)), rows);
  EXPECT_EQ(valueOrThrow(folder_.reader()->rowsOf(segments[1], 4)), std::nullopt);
  throwIf(writer_->setRows(segments[2], rows));
  throwIf(writer_->keepRowsOf(std::span(segments).last(2)));
  throwIf(writer_->commit());
  EXPECT_EQ(valueOrThrow(folder_.reader()->rowsOf(segments[0], 3)), std::nullopt);
}

TEST_F(Catalogue, LosesWhatWasNotCommitted) {
  add(1, textAlone("kept"));
  throwIf(writer_->commit());
  add(2, textAlone("lost"));
  writer_ = nullptr;
  EXPECT_EQ(valueOrThrow(folder_.reader()->counts()).contents, 1U);
  EXPECT_EQ(numbersOf(folder_.reader()->withWords(contentQueryOf("lost", 0), 10)), Numbers{});
}

TEST_F(Catalogue, ShowsAReaderOneMomentUntilItLooksAnew) {
  add(1, textAlone("word"));
  throwIf(writer_->commit());
  const auto reader = folder_.reader();
  add(2, textAlone("word"));
  throwIf(writer_->commit());
  const ContentQuery word = contentQueryOf("word", 0);
  EXPECT_EQ(numbersOf(reader->withWords(word, 10)), Numbers{1});
  throwIf(reader->lookAnew());
  EXPECT_EQ(numbersOf(reader->withWords(word, 10)), (Numbers{1, 2}));
}

TEST_F(Catalogue, IsSoundAsItIsWritten) {
  for (std::uint64_t inode = 1; inode <= 500; ++inode) add(inode, textAlone("some words"));
  throwIf(writer_->mergeText());
  EXPECT_FALSE(folder_.reader()->check());
}

TEST_F(Catalogue, IsMostlyForgottenOnceManyContentsAreGone) {
  std::vector<ContentNumber> numbers;
  for (std::uint64_t inode = 1; inode <= 20'500; ++inode) numbers.push_back(add(inode, {}));
  EXPECT_FALSE(valueOrThrow(writer_->isMostlyForgotten()));
  throwIf(writer_->remove(std::span(numbers).first(20'400)));
  EXPECT_TRUE(valueOrThrow(writer_->isMostlyForgotten()));
}

}  // namespace
}  // namespace vt
