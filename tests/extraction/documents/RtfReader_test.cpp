#include "extraction/documents/RtfReader.h"

#include <gtest/gtest.h>

#include "extraction/documents/ExtractedHere.h"

namespace vt {
namespace {

std::string textOf(const std::string& body) {
  Extraction extraction;
  EXPECT_TRUE(RtfReader(extraction).read("{\\rtf1\\ansi\\ansicpg1252 " + body + "}"));
  return extraction.text.value_or("none");
}

TEST(RtfReader, ReadsText) {
  struct Case {
    const char* what;
    std::string body;
    std::string text;
  };
  const Case cases[] = {
      {"words", "some words", "some words"},
      {"lines of the file", "some\nwo\r\nrds", "somewords"},
      {"paragraphs", "one\\par two\\line three", "one\ntwo\nthree"},
      {"cells", "a\\cell b\\cell\\row c", "a b\nc"},
      {"signs", "\\{\\}\\\\ a\\~b\\_c\\-d\\emdash e", "{}\\ a\u00A0b\u2011cd\u2014e"},
      {"bytes of the code page", "gr\\'fc\\'df", "grüß"},
      {"bytes of a font's", "{\\fonttbl{\\f3\\fcharset204 X;}}{\\f3 \\'cf}\\'cf", "ПÏ"},
      {"two bytes of a font's", "{\\fonttbl{\\f3\\fcharset128 X;}}\\f3 \\'93\\'fa", "日"},
      {"Unicode and its fallback", "\\u8364?x", "€x"},
      {"Unicode and a longer fallback", "{\\uc3\\u8364 abc}d\\u8364 ef", "€d€f"},
      {"Unicode and a fallback in bytes", "\\u8364\\'80x", "€x"},
      {"Unicode and no fallback", "\\uc0\\u8364 x", "€x"},
      {"Unicode in two halves", "\\u-10179?\\u-8704?", "😀"},
      {"half of that alone", "\\u-8704?x", "x"},
      {"fallback ended by a brace", "{\\u8364}x", "€x"},
      {"hidden", "a{\\v b}c\\v d\\v0 e", "ace"},
      {"destinations that are not known", "a{\\*\\foo b}c{\\foo d}", "acd"},
      {"pictures", "a{\\pict\\pngblip 0123}b", "ab"},
      {"bytes that are none", "a{\\pict\\bin3 {{{}b", "ab"},
      {"fields", "{\\field{\\*\\fldinst HYPERLINK x}{\\fldrslt shown}}", "shown"},
      {"a shape's text", "{\\*\\shpinst{\\sp{\\sn n}{\\sv v}}{\\shptxt words}}", "words"},
      {"braces that are not closed", "a{b{c", "abc"},
      {"parameters beyond reason", "\\fs99999999999999999999 a\\bin-7 b", "ab"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(textOf(c.body), c.text);
  }
}

TEST(RtfReader, ReadsWhatTheHeadSays) {
  Extraction extraction;
  RtfReader(extraction)
      .read(
          "{\\rtf1\\ansi\\ansicpg1252{\\info{\\title Gr\\'fc\\'dfe}{\\subject S}{\\author Ann; Ben}"
          "{\\operator Carl}{\\doccomm Note}{\\company Firm}{\\*\\category x}"
          "{\\creatim\\yr2024\\mo13\\dy1}}text}");
  EXPECT_EQ(attributeText(extraction, "kMDItemTitle"), "Grüße");
  EXPECT_EQ(attributeText(extraction, "kMDItemSubject"), "S");
  EXPECT_EQ(attributeText(extraction, "kMDItemAuthors"), "Ann | Ben");
  EXPECT_EQ(attributeText(extraction, "kMDItemEditors"), "Carl");
  EXPECT_EQ(attributeText(extraction, "kMDItemComment"), "Note");
  EXPECT_EQ(attributeText(extraction, "kMDItemOrganizations"), "Firm");
  EXPECT_EQ(attributeText(extraction, "kMDItemContentCreationDate"), "") << "there is no month 13";
  EXPECT_EQ(*extraction.text, "text");
}

}  // namespace
}  // namespace vt
