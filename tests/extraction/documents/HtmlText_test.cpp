#include "extraction/documents/HtmlText.h"

#include <gtest/gtest.h>

#include "extraction/documents/ExtractedHere.h"

namespace vt {
namespace {

std::string textOf(std::string_view page) {
  Extraction extraction;
  readHtml(page, extraction);
  return *extraction.text;
}

TEST(HtmlText, PartsLinesByBlocksAndNotByWhatIsWithinLines) {
  EXPECT_EQ(textOf("<p>one <b>t</b>wo</p><p>three</p>"), "one two\nthree");
  EXPECT_EQ(textOf("<table><tr><td>a</td><td>b</td></tr></table>"), "a\nb");
  EXPECT_EQ(textOf("a<br>b"), "a\nb");
}

TEST(HtmlText, UnfoldsEntities) {
  EXPECT_EQ(textOf("fish &amp; chips &eacute;"), "fish & chips é");
}

TEST(HtmlText, HoldsWhatStandsForPictures) { EXPECT_EQ(textOf("<img alt='a chart'>"), "a chart"); }

TEST(HtmlText, TakesNamesOfPropertiesWhateverTheirCase) {
  Extraction extraction;
  readHtml(
      "<meta name=AUTHOR content=Ann><meta name='DC.creator' content=Ben>"
      "<meta name=generator content=Editor><meta name=copyright content=Us>"
      "<meta name=dcterms.publisher content=Press>",
      extraction);
  EXPECT_EQ(attributeText(extraction, "kMDItemAuthors"), "Ann | Ben");
  EXPECT_EQ(attributeText(extraction, "kMDItemCreator"), "Editor");
  EXPECT_EQ(attributeText(extraction, "kMDItemCopyright"), "Us");
  EXPECT_EQ(attributeText(extraction, "kMDItemPublishers"), "Press");
}

TEST(HtmlText, NamesTheCharacterSetOfThePage) {
  EXPECT_EQ(charsetNamedIn("<meta charset=\"iso-8859-2\">"), "iso-8859-2");
  EXPECT_EQ(charsetNamedIn("<meta http-equiv=x content='text/html; CHARSET=koi8-r'>"), "koi8-r");
  EXPECT_EQ(charsetNamedIn("<meta charset="), "");
  EXPECT_EQ(charsetNamedIn("<p>nothing"), "");
  EXPECT_EQ(charsetNamedIn(std::string(2000, ' ') + "charset=utf-8"), "") << "too far down";
}

TEST(HtmlExtractor, ReadsPagesInTheirCharacterSet) {
  const ExtractedHere extract;
  const auto page = extract("a.html", "<meta charset=windows-1251><p>\xCF\xF0\xE8\xE2\xE5\xF2");
  ASSERT_TRUE(page);
  EXPECT_EQ(*page->text, "Привет");
}

}  // namespace
}  // namespace vt
