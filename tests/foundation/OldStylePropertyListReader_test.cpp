#include "foundation/OldStylePropertyListReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/PropertyListTesting.h"

namespace vt {
namespace {

TEST(OldStylePropertyListReader, ReadsStringsDataArraysAndDictionaries) {
  struct Case {
    const char* text;
    const char* tree;
  };
  const Case cases[] = {
      {"hello", "s\"hello\""},
      {" a1_$/:.-Z ", "s\"a1_$/:.-Z\""},
      {"/usr/share//x", "s\"/usr/share//x\""},
      {"12", "s\"12\""},
      {R"("")", "s\"\""},
      {R"("a b; = {}()<>,")", "s\"a b; = {}()<>,\""},
      {R"('it"s')", R"(s"it\x22s")"},
      {"\"two\nlines\"", "s\"two\\x0alines\""},
      {"\"\xC3\xA4\"", "s\"\\xc3\\xa4\""},
      {"<>", "x"},
      {"<0fbd77 1c\n2735aE>", "x0fbd771c2735ae"},
      {"()", "[]"},
      {"(a, (b), <00>,)", "[s\"a\",[s\"b\"],x00]"},
      {"{}", "{}"},
      {"{a=b;\"c d\" = {e=(f);};}", "{\"a\":s\"b\",\"c d\":{\"e\":[s\"f\"]}}"},
      {"{ a; }", "{\"a\":s\"a\"}"},
      {"{ a = 1; b = 2; a = 3; }", "{\"a\":s\"3\",\"b\":s\"2\"}"},
      {"// one\n/* two */ { /**/ a /* = */ = // c\r b; } // end", "{\"a\":s\"b\"}"},
      {"/* nothing yet */", "{}"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(outcome(readOldStylePropertyList(c.text)), c.tree);
  }
}

TEST(OldStylePropertyListReader, ReadsAStringsFileAsADictionary) {
  struct Case {
    const char* text;
    const char* tree;
  };
  const Case cases[] = {
      {"/* Title */\n\"Name\" = \"Nom\";\nkMDItemX = \"X\";\n",
       R"({"Name":s"Nom","kMDItemX":s"X"})"},
      {"a;", "{\"a\":s\"a\"}"},
      {"a = (b);", "{\"a\":[s\"b\"]}"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(outcome(readOldStylePropertyList(c.text)), c.tree);
  }
}

TEST(OldStylePropertyListReader, UnderstandsEveryEscape) {
  struct Case {
    const char* text;
    const char* tree;
  };
  const Case cases[] = {
      {R"("\a\b\f\n\r\t\v")", R"(s"\x07\x08\x0c\x0a\x0d\x09\x0b")"},
      {R"("\"\'\\")", R"(s"\x22'\x5c")"},
      {R"("\z\ä")", R"(s"z\xc3\xa4")"},
      {"\"a\\\nb\"", R"(s"a\x0ab")"},
      {R"("\101\0\12x\1018")", R"(s"A\x00\x0axA8")"},
      {R"("\240\341\200")", "s\"\\xc2\\xa9\\xc3\\x86\\xc2\\xa0\""},  // NeXTSTEP: © Æ nbsp
      {R"("\U00e4\u00E4")", R"(s"\xc3\xa4\xc3\xa4")"},
      {R"("\Ud83d\Ude00")", R"(s"\xf0\x9f\x98\x80")"},
      {R"("\U00e45")", R"(s"\xc3\xa45")"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(outcome(readOldStylePropertyList(c.text)), c.tree);
  }
}

TEST(OldStylePropertyListReader, NamesKindLineAndOffsetOfWhatIsWrong) {
  struct Case {
    const char* what;
    std::string text;
    const char* outcome;
  };
  const Case cases[] = {
      {"nothing", "", "truncated 1:0"},
      {"blanks", " \n ", "truncated 2:3"},
      {"unclosed comment", "{}\n/* x", "truncated 2:3"},
      {"unclosed string", "(\n\"abc", "truncated 2:2"},
      {"backslash at the end", "\"abc\\", "truncated 1:0"},
      {"other quote", "\"abc'", "truncated 1:0"},
      {"unclosed array", "(a,\nb", "truncated 2:5"},
      {"unclosed dictionary", "{a = b;\n", "truncated 2:8"},
      {"no value", "{a = ", "truncated 1:5"},
      {"unclosed data", "<00", "truncated 1:3"},
      {"value missing", "{a = ;}", "syntax 1:5"},
      {"semicolon missing", "{a = b\n}", "syntax 2:7"},
      {"semicolon missing in a strings file", "a = b\nc = d;", "syntax 2:6"},
      {"comma missing", "(a\nb)", "syntax 2:3"},
      {"two commas", "(a,,b)", "syntax 1:3"},
      {"key that is an array", "{(a) = b;}", "syntax 1:1"},
      {"junk behind", "{}\nx", "syntax 2:3"},
      {"two strings", "a b", "syntax 1:2"},
      {"stray brace", "}", "syntax 1:0"},
      {"brace in a strings file", "a = b; }", "syntax 1:7"},
      {"unquoted umlaut", "{a = \xC3\xA4;}", "syntax 1:5"},
      {"at sign", "@x", "syntax 1:0"},
      {"typed value", "(<*I5>)", "value 1:2"},
      {"odd digits", "(\n<012>)", "value 2:2"},
      {"no digit", "<0g>", "value 1:2"},
      {"bad UTF-8", "(\n\"\xFF\")", "text 2:3"},
      {"short Unicode escape", R"("\U00e")", "syntax 1:1"},
      {"lone surrogate", R"("a\Ud83dx")", "text 1:2"},
      {"two high ones", R"("\Ud83d\Ud83d")", "text 1:1"},
      {"low one first", R"("\Ude00")", "text 1:1"},
      {"octal past a byte", R"("\777")", "text 1:1"},
      {"octal that NeXTSTEP leaves out", R"("\377")", "text 1:1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outcome(readOldStylePropertyList(c.text)), c.outcome);
  }
}

std::string utf16(std::u16string_view text, bool lowByteFirst) {
  std::string bytes = lowByteFirst ? "\xFF\xFE" : "\xFE\xFF";
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFF);
    const char high = static_cast<char>(unit >> 8);
    bytes += lowByteFirst ? std::string{low, high} : std::string{high, low};
  }
  return bytes;
}

TEST(OldStylePropertyListReader, ReadsMarkedUTF16AndUTF8AndCountsTheirBytes) {
  EXPECT_EQ(outcome(readOldStylePropertyList("\xEF\xBB\xBF{}x")), "syntax 1:5");
  for (const bool lowByteFirst : {false, true}) {
    SCOPED_TRACE(lowByteFirst);
    const auto read = [lowByteFirst](std::u16string_view text) {
      return outcome(readOldStylePropertyList(utf16(text, lowByteFirst)));
    };
    EXPECT_EQ(read(u"\"\u00e4\" = \"\U0001F600\";"), R"({"\xc3\xa4":s"\xf0\x9f\x98\x80"})");
    EXPECT_EQ(read(u"\"\U0001F600\"\n = ;"), "syntax 2:18");
    EXPECT_EQ(read(std::u16string{'"', 0xD83D, '"'}), "text 1:4");
    EXPECT_EQ(outcome(readOldStylePropertyList(utf16(u"ab", lowByteFirst) + "c")), "text 1:6");
  }
}

TEST(OldStylePropertyListReader, TakesTheLargestDepthAndNotOneMore) {
  const auto nested = [](std::size_t depth) {
    return std::string(depth, '(') + std::string(depth, ')');
  };
  EXPECT_TRUE(readOldStylePropertyList(nested(PropertyListLimits{}.depth)));
  EXPECT_EQ(readOldStylePropertyList(nested(PropertyListLimits{}.depth + 1)).error().kind,
            PropertyListErrorKind::kTooDeep);
  EXPECT_EQ(readOldStylePropertyList(std::string(1'000'000, '{')).error().kind,
            PropertyListErrorKind::kSyntax);
}

TEST(OldStylePropertyListReader, TakesAsManyValuesAndBytesAsTheLimitsAllow) {
  EXPECT_TRUE(readOldStylePropertyList("(a, b)", {.objects = 3}));
  EXPECT_EQ(outcome(readOldStylePropertyList("(a, b)", {.objects = 2})), "many 1:4");
  EXPECT_TRUE(readOldStylePropertyList("(a, b)", {.bytes = 6}));
  EXPECT_EQ(outcome(readOldStylePropertyList("(a, b)", {.bytes = 5})), "large 0:5");
}

TEST(OldStylePropertyListReader, FindsNoListInAnyTruncationOfOne) {
  const std::string whole = "{ a = (\"b\\U00e4\", <0001>); /* c */ d = {}; }";
  ASSERT_TRUE(readOldStylePropertyList(whole));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(readOldStylePropertyList({cut.data(), cut.size()})) << size;
  }
}

}  // namespace
}  // namespace vt
