#include "foundation/Utf8.h"

#include <gtest/gtest.h>

namespace vt {

TEST(Utf8, TakesOnlyWellFormedSequences) {
  struct Case {
    const char* what;
    std::string_view bytes;
    bool isValid;
    char32_t codePoint;
    std::size_t length;
  };
  const Case cases[] = {
      {"ASCII", "a", true, U'a', 1},
      {"two bytes", "\xC3\xB6x", true, U'ö', 2},
      {"three bytes", "\xE6\x97\xA5", true, U'日', 3},
      {"four bytes", "\xF0\x9F\x98\x80", true, U'😀', 4},
      {"NUL", std::string_view("\0", 1), true, 0, 1},
      {"stray continuation", "\x80", false, kReplacementCharacter, 1},
      {"cut short", "\xC3", false, kReplacementCharacter, 1},
      {"overlong", "\xC0\x80", false, kReplacementCharacter, 1},
      {"surrogate", "\xED\xA0\x80", false, kReplacementCharacter, 1},
      {"beyond the last", "\xF4\x90\x80\x80", false, kReplacementCharacter, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const Utf8Character character = utf8CharacterAt(c.bytes, 0);
    EXPECT_EQ(character.isValid, c.isValid);
    EXPECT_EQ(character.codePoint, c.codePoint);
    EXPECT_EQ(character.length, c.length);
  }
}

TEST(Utf8, AppendsWhatItReads) {
  for (const char32_t codePoint : {U'a', U'ö', U'日', U'😀', char32_t{0x10FFFF}}) {
    std::string bytes;
    appendUtf8(codePoint, bytes);
    EXPECT_EQ(utf8CharacterAt(bytes, 0).codePoint, codePoint);
    EXPECT_EQ(utf8CharacterAt(bytes, 0).length, bytes.size());
  }
}

TEST(Utf8, FindsAByteOutsideAsciiAtEveryPlace) {
  for (std::size_t length = 0; length < 20; ++length) {
    std::string text(length, 'a');
    EXPECT_TRUE(isAscii(text));
    for (std::size_t at = 0; at < length; ++at) {
      text[at] = '\x80';
      EXPECT_FALSE(isAscii(text)) << length << " " << at;
      text[at] = 'a';
    }
  }
}

}  // namespace vt
