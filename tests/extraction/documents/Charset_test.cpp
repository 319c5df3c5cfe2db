#include "extraction/documents/Charset.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

TEST(Charset, IsTurnedIntoUTF8) {
  struct Case {
    const char* charset;
    std::string bytes;
    std::string text;
  };
  const Case cases[] = {
      {"", "gr\xFC\xDF", "grüß"},
      {"", "grüß", "grüß"},
      {"UTF-8", "grüß", "grüß"},
      {"iso-8859-1", "\x80 \xE9", "€ é"},
      {"ISO-8859-15", "\xA4", "€"},
      {"koi8-r", "\xD0\xD2", "пр"},
      {"Shift_JIS", "\x93\xFA\x96\x7B", "日本"},
      {"gb2312", "\xD6\xD0", "中"},
      {"macintosh", "\x8E", "é"},
      {"no-such-set", "\xE9t\xE9 ", "été "},
      {"utf-8//TRANSLIT", "é", "é"},
      {"koi8-r",
       "\xEF\xBB\xBF"
       "é",
       "é"},
      {"utf-16",
       std::string("\xFF\xFE"
                   "a\0",
                   4),
       "a"},
      {"shift_jis",
       "a\xFF"
       "b",
       "a\uFFFD"
       "b"},
      {"shift_jis", "a\x93", "a"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.charset);
    EXPECT_EQ(decodedText(c.bytes, c.charset), c.text);
  }
}

}  // namespace
}  // namespace vt
