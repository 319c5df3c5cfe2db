#include <gmock/gmock.h>

#include <string>

#include "extraction/documents/ExtractedHere.h"
#include "extraction/rehearsal/RehearsalFile.h"

namespace vt {
namespace {

using testing::HasSubstr;

// Whoever stops at an error sets up no more than that takes.
class DocumentRehearsal : public testing::Test {
 protected:
  Extraction found(const std::string& name, const RehearsalFile& file) const {
    auto result = extract_(name, file.bytes);
    if (!result) ADD_FAILURE() << name << ": " << result.error().reason;
    return result ? *result : Extraction();
  }

 private:
  ExtractedHere extract_;
};

TEST_F(DocumentRehearsal, IsReadToItsEndAsPdf) {
  const auto files = rehearsalOfPdf();
  ASSERT_EQ(files.size(), 1U);
  const Extraction extraction = found("a.pdf", files[0]);
  const std::string text = extraction.text.value_or("none");
  EXPECT_THAT(text, HasSubstr("The quick brown fox jumps over the lazy dog, 0123456789 times."));
  EXPECT_THAT(text, HasSubstr("\u00c9t\u00e9 (na\u00efve): d\u00e9j\u00e0 vu."));
  EXPECT_THAT(text, HasSubstr("AB")) << "by the table of characters of a font";
  EXPECT_THAT(text, HasSubstr("The quick brown fox, packed"));
  EXPECT_EQ(attributeText(extraction, "kMDItemTitle"), "AB\u00e9");
  EXPECT_EQ(attributeText(extraction, "kMDItemNumberOfPages"), "2");
}

TEST_F(DocumentRehearsal, IsReadToItsEndAsHtml) {
  const auto files = rehearsalOfHtml();
  ASSERT_EQ(files.size(), 1U);
  const Extraction extraction = found("a.html", files[0]);
  EXPECT_THAT(extraction.text.value_or("none"), HasSubstr("a picture"));
  EXPECT_EQ(attributeText(extraction, "kMDItemTitle"), "Rehearsal & more");
}

TEST_F(DocumentRehearsal, IsReadToItsEndAsOtherDocuments) {
  const auto files = rehearsalOfDocuments();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_THAT(found("a.xml", files[0]).text.value_or("none"), HasSubstr("The quick <brown> fox"));
  EXPECT_THAT(found("a.rtf", files[1]).text.value_or("none"),
              HasSubstr("The quick d\u00e9j\u00e0 vu"));
}

}  // namespace
}  // namespace vt
