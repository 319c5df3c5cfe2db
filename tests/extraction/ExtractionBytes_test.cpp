#include "extraction/ExtractionBytes.h"

#include <gtest/gtest.h>

#include "extraction/ByteReader.h"
#include "foundation/Array.h"
#include "support/Places.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

using Found = Result<Extraction, ExtractionFailure>;
using Kind = ExtractionFailure::Kind;

class ExtractionBytesTest : public testing::Test {
 protected:
  std::optional<Found> read(std::string_view bytes) const { return extractionIn(bytes, *schema_); }
  Extraction again(const Extraction& extraction) const {
    const auto found = read(extractionBytes(extraction));
    return found && *found ? **found : Extraction();
  }

  const Result<query::AttributeSchema, query::SchemaError> schema_ =
      query::AttributeSchema::parse(readFile(resourcePath("attributes.tsv")));
};

TEST_F(ExtractionBytesTest, ComeBackAsTheyWere) {
  Extraction extraction;
  extraction.text = "some words";
  extraction.attributes = {
      {"kMDItemTitle", "Title"},   {"kMDItemAuthors", Array::make({"Ann", "Ben"})},
      {"kMDItemNumberOfPages", 3}, {"kMDItemPageWidth", 595.5},
      {"kMDItemStreamable", true}, {"kMDItemDueDate", Date{std::chrono::seconds{5}}}};
  const Extraction same = again(extraction);
  EXPECT_EQ(same.text, extraction.text);
  EXPECT_EQ(same.attributes, extraction.attributes);
}

TEST_F(ExtractionBytesTest, TellNoTextFromAnEmptyOne) {
  Extraction extraction;
  EXPECT_EQ(again(extraction).text, std::nullopt);
  extraction.text = "";
  EXPECT_EQ(again(extraction).text, "");
}

TEST_F(ExtractionBytesTest, CutATextBetweenCharacters) {
  Extraction extraction;
  extraction.text = std::string(kMostExtractedText - 1, 'x') + "é";
  EXPECT_EQ(again(extraction).text, std::string(kMostExtractedText - 1, 'x'));
}

TEST_F(ExtractionBytesTest, TellWhyNothingWasFound) {
  for (const Kind kind : {Kind::kUnreadable, Kind::kMalformed, Kind::kTooLarge, Kind::kTimedOut}) {
    const auto found = read(extractionBytes(ExtractionFailure{kind, "it is odd"}));
    ASSERT_TRUE(found && !*found);
    EXPECT_EQ(found->error().kind, kind);
    EXPECT_EQ(found->error().reason, "it is odd");
  }
  for (const Kind kind : {Kind::kCrashed, Kind::kUnavailable}) {
    EXPECT_FALSE(read(extractionBytes(ExtractionFailure{kind, ""}))) << "not the worker's to say";
  }
}

TEST_F(ExtractionBytesTest, AreRefusedWhenTheyAreNone) {
  Extraction extraction;
  extraction.text = "some words";
  extraction.attributes = {{"kMDItemTitle", "Title"}};
  const std::string bytes = extractionBytes(extraction);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    // Behind the text they may end.
    if (size == 15) continue;
    EXPECT_FALSE(read(bytes.substr(0, size))) << size;
  }
  EXPECT_FALSE(read("garbage"));
  EXPECT_FALSE(read(bytes + "x"));
  EXPECT_FALSE(read(std::string("T\1\0\0\0\xff", 6))) << "no UTF-8";
}

TEST_F(ExtractionBytesTest, HaveNoAttributesThatTheSchemaDoesNotKnowSo) {
  Extraction extraction;
  extraction.attributes = {{"kMDItemFSName", "other"},
                           {"kMDItemContentType", "public.png"},
                           {"kMDItemTitle", 5},
                           {"kMDItemNumberOfPages", true},
                           {"kMDItemAuthors", "nobody"},
                           {"unheardOf", "x"},
                           {"kMDItemSubject", Array::make({"x"})}};
  const auto found = read(extractionBytes(extraction));
  ASSERT_TRUE(found && *found);
  EXPECT_TRUE((*found)->attributes.empty());
}

}  // namespace
}  // namespace vt
