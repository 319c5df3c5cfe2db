#include "images/worker/PageText.h"

#include <gtest/gtest.h>

namespace vt::worker {
namespace {

TEST(ReadableText, IsReadInWhateverItIsWritten) {
  struct Case {
    const char* what;
    std::string bytes;
    const char* text;
  };
  const Case cases[] = {
      {"UTF-8", "gr\xc3\xbc\xc3\x9f", "grüß"},
      {"UTF-8 with its mark", "\xef\xbb\xbfx", "x"},
      {"UTF-8 cut within a character", "x\xc3", "x"},
      {"Latin-1", "gr\xfc\xdf dich", "grüß dich"},
      {"UTF-16, low byte first", std::string("\xff\xfex\0\xfc\0", 6), "xü"},
      {"UTF-16, high byte first", std::string("\xfe\xff\0x\0\xfc", 6), "xü"},
      {"Shift_JIS",
       "\x90\xbf\x8b\x81\x8f\x91\x82\xf0\x8a\x6d\x94\x46\x82\xb5\x82\xc4\x82\xad\x82\xbe\x82\xb3"
       "\x82\xa2\x81\x42",
       "請求書を確認してください。"},
      {"control characters", "a\x01\x7f\tb\fc\x1b[0m", "a\tb\nc[0m"},
      {"line ends of all kinds", "a\r\nb\rc\nd", "a\nb\nc\nd"},
      {"NUL", std::string("ab\0cdefgh", 9), "abcdefgh"},
      {"nothing", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(readableText(c.bytes), c.text);
  }
}

TEST(TextOfHtml, IsWhatAPersonWouldRead) {
  struct Case {
    const char* what;
    const char* html;
    const char* text;
  };
  const Case cases[] = {
      {"tags", "a<b>b</b> c", "ab c"},
      {"blocks", "<h1>T</h1><p>one</p><p>two", "T\n\none\n\ntwo"},
      {"white space", " a \n\t b ", "a b"},
      {"scripts and styles", "a<script>x<y</script>b<STYLE>c</STYLE >d", "abd"},
      {"comments", "a<!-- b > c -->d", "ad"},
      {"entities", "&lt;&#65;&#x42;&amp;&unknown;&", "<AB&&unknown;&"},
      {"entities of no character", "&#0;&#xd800;&#99999999999999999999;",
       "&#0;\xef\xbf\xbd&#99999999999999999999;"},
      {"no tag", "a < b", "a < b"},
      {"cut off", "a<script>b", "a"},
      {"cut off in a tag", "a<b", "a"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(textOfHtml(c.html), c.text);
  }
}

TEST(MarkupOfMarkdown, MarksHeadingsAndEmphasisAndEscapesTheRest) {
  struct Case {
    const char* what;
    const char* markdown;
    const char* markup;
  };
  const Case cases[] = {
      {"heading", "## T", "<span weight=\"bold\" size=\"160%\">T</span>\n"},
      {"no heading", "#T", "#T\n"},
      {"strong, emphasis, code", "**a** *b* `c`", "<b>a</b> <i>b</i> <tt>c</tt>\n"},
      {"escaped", "a < b & **<c>**", "a &lt; b &amp; <b>&lt;c&gt;</b>\n"},
      {"alone", "a * b", "a * b\n"},
      {"lines of one paragraph", "a\nb\n\nc", "a b\n\nc\n"},
      {"list", "- a\n- b", "  • a\n  • b\n"},
      {"fenced code", "```\n**a**\n```", "<tt>**a**</tt>\n"},
      {"across lines", "`a\nb`", "<tt>a b</tt>\n"},
      {"nothing", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(markupOfMarkdown(c.markdown), c.markup);
  }
}

}  // namespace
}  // namespace vt::worker
