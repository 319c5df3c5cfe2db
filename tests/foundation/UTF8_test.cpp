#include "foundation/UTF8.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(UTF8, EncodesAndDecodesEveryCodePointAlike) {
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    if (codePoint >= 0xD800 && codePoint < 0xE000) continue;
    std::string text;
    appendCodePoint(text, codePoint);
    const DecodedCodePoint decoded = decodeCodePoint(text);
    ASSERT_TRUE(decoded.valid) << std::hex << static_cast<unsigned>(codePoint);
    ASSERT_EQ(decoded.codePoint, codePoint);
    ASSERT_EQ(decoded.length, text.size());
    ASSERT_TRUE(isValidUTF8(text));
  }
}

TEST(UTF8, EncodesWhatIsNoCodePointAsTheReplacementCharacter) {
  for (const char32_t wrong : {char32_t{0xD800}, char32_t{0xDFFF}, char32_t{0x110000}}) {
    std::string text;
    appendCodePoint(text, wrong);
    EXPECT_EQ(text, "\xEF\xBF\xBD");
  }
}

TEST(UTF8, FindsTheFirstInvalidByteAndReplacesEachBrokenRunOnce) {
  struct Case {
    const char* what;
    std::string_view text;
    std::size_t validLength;
    std::string_view shown;
  };
  const Case cases[] = {
      {"nothing", "", 0, ""},
      {"ASCII, longer than a word", "abcdefghijklmnopq", 17, "abcdefghijklmnopq"},
      {"umlaut, euro, emoji", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", 9,
       "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
      {"Latin-1 in the middle", "caf\xE9 noir and more", 3, "caf\xEF\xBF\xBD noir and more"},
      {"continuation alone", "a\x80z", 1, "a\xEF\xBF\xBDz"},
      {"two of them", "\x80\xBF", 0, "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"overlong slash", "\xC0\xAF", 0, "\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"overlong in three", "\xE0\x9F\xBF", 0, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"surrogate", "x\xED\xA0\x80", 1, "x\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"past the last", "\xF4\x90\x80\x80", 0, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
      {"no lead byte", "\xFF", 0, "\xEF\xBF\xBD"},
      {"cut short at the end", "ab\xF0\x9F\x98", 2, "ab\xEF\xBF\xBD"},
      {"cut short by a letter", "\xE2\x82z", 0, "\xEF\xBF\xBDz"},
      {"past the eighth byte", "01234567890\xC3", 11, "01234567890\xEF\xBF\xBD"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(validUTF8Length(c.text), c.validLength);
    EXPECT_EQ(isValidUTF8(c.text), c.validLength == c.text.size());
    EXPECT_EQ(displayText(c.text), c.shown);
  }
}

TEST(UTF8, ShowsControlCharactersAndNulUnchanged) {
  const std::string_view text("a\0\n\x1b", 4);
  EXPECT_EQ(displayText(text), text);
}

}  // namespace
}  // namespace vt
