#include "foundation/XMLPropertyListReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/PropertyListTesting.h"

namespace vt {
namespace {

constexpr const char* kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::string plist(const std::string& content) {
  return "<plist version=\"1.0\">" + content + "</plist>";
}

std::string repeated(const std::string& text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) all += text;
  return all;
}

TEST(XMLPropertyListReader, ReadsEachKindOfValue) {
  struct Case {
    const char* content;
    const char* tree;
  };
  const Case cases[] = {
      {"<true/>", "true"},
      {"<false></false>", "false"},
      {"<true> \n </true>", "true"},
      {"<string>a &lt;b&gt; &amp; &quot;&apos;&#65;&#x42;</string>", R"(s"a <b> & \x22'AB")"},
      {"<string/>", "s\"\""},
      {"<string>  x\n</string>", "s\"  x\\x0a\""},
      {"<string>a\r\nb&#13;c</string>", "s\"a\\x0ab\\x0dc\""},
      {"<string>a<![CDATA[<&>]]>b</string>", "s\"a<&>b\""},
      {"<string>a<!-- no -->b<?nor this?>c</string>", "s\"abc\""},
      {"<integer>0</integer>", "i0"},
      {"<integer>-9223372036854775808</integer>", "i-9223372036854775808"},
      {"<integer>18446744073709551615</integer>", "i18446744073709551615"},
      {"<integer> +7\n</integer>", "i7"},
      {"<integer>0x1F</integer>", "i31"},
      {"<real>1.5</real>", "r3ff8000000000000"},
      {"<real>-0.0</real>", "r8000000000000000"},
      {"<real>+infinity</real>", "r7ff0000000000000"},
      {"<real>-Inf</real>", "rfff0000000000000"},
      {"<real>nan</real>", "rnan"},
      {"<real>5e-324</real>", "r0000000000000001"},
      {"<date>1970-01-01T00:00:01Z</date>", "d1000000"},
      {"<date>0001-01-01T00:00:00Z</date>", "d-62135596800000000"},
      {"<date>9999-12-31T23:59:59Z</date>", "d253402300799000000"},
      {"<data>\n\tAAEC\n\t/w==\n</data>", "x000102ff"},
      {"<data/>", "x"},
      {"<array/>", "[]"},
      {"<array><integer>1</integer> <array><true/></array></array>", "[i1,[true]]"},
      {"<dict/>", "{}"},
      {"<dict><key>b</key><integer>1</integer><key/><dict/></dict>", "{\"b\":i1,\"\":{}}"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.content);
    EXPECT_EQ(outcome(readXMLPropertyList(plist(c.content))), c.tree);
  }
}

TEST(XMLPropertyListReader, GivesARepeatedKeyItsFirstPlaceAndItsLastValue) {
  std::string content = "<dict><key>a</key><true/><key>b</key><true/>";
  for (int i = 0; i < 20; ++i) content += "<key>" + std::to_string(i) + "</key><true/>";
  content += "<key>a</key><integer>2</integer><key>19</key><integer>3</integer></dict>";
  const std::string tree = outcome(readXMLPropertyList(plist(content)));
  EXPECT_THAT(tree, testing::StartsWith("{\"a\":i2,\"b\":true,\"0\":true,"));
  EXPECT_THAT(tree, testing::EndsWith("\"18\":true,\"19\":i3}"));
}

TEST(XMLPropertyListReader, ReadsTheEncodingsThatItsParserKnows) {
  const std::string body = "<plist><string>\xC3\xA4</string></plist>";
  std::string utf16 = "\xFF\xFE";
  for (const char c : std::string("<plist><string>\xE4</string></plist>")) utf16 += {c, '\0'};
  const std::pair<const char*, std::string> cases[] = {
      {"UTF-8", kHead + body},
      {"no declaration", body},
      {"byte order mark", "\xEF\xBB\xBF" + (kHead + body)},
      {"ISO-8859-1",
       "<?xml version='1.0' encoding='ISO-8859-1'?><plist><string>\xE4</string></plist>"},
      {"UTF-16", utf16},
  };
  for (const auto& [what, bytes] : cases) {
    SCOPED_TRACE(what);
    EXPECT_EQ(outcome(readXMLPropertyList(bytes)), "s\"\\xc3\\xa4\"");
  }
}

TEST(XMLPropertyListReader, NamesKindLineAndOffsetOfWhatIsWrong) {
  struct Case {
    const char* what;
    std::string bytes;
    const char* outcome;
  };
  const Case cases[] = {
      {"nothing", "", "truncated 1:0"},
      {"cut in a tag", "<plist>\n<str", "truncated 2:8"},
      {"cut between tags", "<plist>\n<dict>\n", "truncated 3:15"},
      {"bare ampersand", "<plist>\n<string>a & b</string></plist>", "syntax 2:19"},
      {"wrong end tag", "<plist>\n<array></dict></plist>", "syntax 2:17"},
      {"bad UTF-8", "<plist>\n<string>\xFF</string></plist>", "syntax 2:16"},
      {"control character", "<plist><string>\x01</string></plist>", "syntax 1:15"},
      {"numeric NUL", "<plist><string>&#0;</string></plist>", "syntax 1:15"},
      {"unknown encoding", "<?xml version='1.0' encoding='EBCDIC'?><plist/>", "syntax 1:30"},
      {"blank before the declaration", std::string("\n") + kHead + "<plist/>", "syntax 2:1"},
      {"text behind the end", "<plist><true/></plist>\nx", "syntax 2:23"},
      {"second root element", "<plist><true/></plist>\n<plist/>", "syntax 2:23"},
      {"root is not plist", "<html/>", "structure 1:0"},
      {"value as root", "<dict/>", "structure 1:0"},
      {"empty plist", "<plist>\n</plist>", "structure 2:8"},
      {"plist in plist", "<plist><plist/></plist>", "structure 1:7"},
      {"two values", "<plist><true/>\n<true/></plist>", "structure 2:15"},
      {"null", "<plist><null/></plist>", "structure 1:7"},
      {"other case", "<plist><Dict/></plist>", "structure 1:7"},
      {"text in plist", "<plist>x<true/></plist>", "structure 1:7"},
      {"text in an array", "<plist><array>\n<true/>x</array></plist>", "structure 2:22"},
      {"key in an array", "<plist><array><key>a</key></array></plist>", "structure 1:14"},
      {"key as root", "<plist><key>a</key></plist>", "structure 1:7"},
      {"value without key", "<plist><dict>\n<true/></dict></plist>", "structure 2:14"},
      {"two keys", "<plist><dict>\n<key>a</key><key>b</key></dict></plist>", "structure 2:26"},
      {"key without value", "<plist><dict>\n<key>a</key>\n</dict></plist>", "structure 3:27"},
      {"element in a string", "<plist><string>a<true/></string></plist>", "structure 1:16"},
      {"element in a key", "<plist><dict><key><true/></key></dict></plist>", "structure 1:18"},
      {"text in true", plist("<true>yes</true>"), "value 1:21"},
      {"no integer", plist("\n<integer></integer>"), "value 2:22"},
      {"letters behind", plist("<integer>12abc</integer>"), "value 1:21"},
      {"real as integer", plist("<integer>1.5</integer>"), "value 1:21"},
      {"two signs", plist("<integer>+-1</integer>"), "value 1:21"},
      {"past 2^64", plist("<integer>18446744073709551616</integer>"), "value 1:21"},
      {"below -2^63", plist("<integer>-9223372036854775809</integer>"), "value 1:21"},
      {"hexadecimal without digits", plist("<integer>0x</integer>"), "value 1:21"},
      {"no real", plist("<real> </real>"), "value 1:21"},
      {"comma", plist("<real>1,5</real>"), "value 1:21"},
      {"real too large", plist("<real>1e999</real>"), "value 1:21"},
      {"hexadecimal real", plist("<real>0x1p3</real>"), "value 1:21"},
      {"word", plist("<real>infinite</real>"), "value 1:21"},
      {"no date", plist("<date/>"), "value 1:21"},
      {"day only", plist("<date>2024-02-29</date>"), "value 1:21"},
      {"no such day", plist("<date>2023-02-29T00:00:00Z</date>"), "value 1:21"},
      {"month 13", plist("<date>2023-13-01T00:00:00Z</date>"), "value 1:21"},
      {"hour 24", plist("<date>2023-01-01T24:00:00Z</date>"), "value 1:21"},
      {"leap second", plist("<date>2016-12-31T23:59:60Z</date>"), "value 1:21"},
      {"year 0", plist("<date>0000-01-01T00:00:00Z</date>"), "value 1:21"},
      {"zone", plist("<date>2023-01-01T00:00:00+02:00</date>"), "value 1:21"},
      {"fraction", plist("<date>2023-01-01T00:00:00.5Z</date>"), "value 1:21"},
      {"unpadded base64", plist("<data>AAE</data>"), "value 1:21"},
      {"garbage base64", plist("<data>AA$=</data>"), "value 1:21"},
      {"declared entity",
       "<!DOCTYPE plist [\n<!ENTITY a \"aaaa\">]>\n<plist><string>&a;</string></plist>",
       "unsupported 2:29"},
      {"external entity",
       "<!DOCTYPE plist [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><plist><true/></plist>",
       "unsupported 1:55"},
      {"parameter entity",
       "<!DOCTYPE plist [<!ENTITY % a \"<!ATTLIST plist b CDATA '1'>\">]><plist><true/></plist>",
       "unsupported 1:30"},
      {"unknown entity", "<plist><string>&nbsp;</string></plist>", "syntax 1:15"},
      {"unknown entity under a DOCTYPE",
       "<!DOCTYPE plist SYSTEM \"x\">\n<plist><string>&nbsp;</string></plist>", "unsupported 2:43"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outcome(readXMLPropertyList(c.bytes)), c.outcome);
  }
}

TEST(XMLPropertyListReader, CountsLinesInUTF16) {
  for (const bool lowByteFirst : {false, true}) {
    SCOPED_TRACE(lowByteFirst);
    std::string bytes = lowByteFirst ? "\xFF\xFE" : "\xFE\xFF";
    // U+0A0A has two bytes that look like line feeds.
    const std::u16string text = u"<plist>\n<array><string>\u0a0a</string>\n<null/></array></plist>";
    for (const char16_t unit : text) {
      const char low = static_cast<char>(unit & 0xFF);
      const char high = static_cast<char>(unit >> 8);
      bytes += lowByteFirst ? std::string{low, high} : std::string{high, low};
    }
    EXPECT_EQ(outcome(readXMLPropertyList(bytes)), "structure 3:70");
  }
}

TEST(XMLPropertyListReader, SaysWhatItFoundInAMessageFitToShow) {
  const auto result = readXMLPropertyList(plist("\n<integer>1\x02</integer>"));
  EXPECT_EQ(result.error().description(), "line 2, byte 32: not well-formed (invalid token)");
  const auto overlong =
      readXMLPropertyList(plist("<integer>\n" + std::string(99, 'x') + "</integer>"));
  EXPECT_EQ(overlong.error().text,
            "<integer> holds \"\\x0a" + std::string(39, 'x') + "\"…, not an integer of 64 bits");
}

TEST(XMLPropertyListReader, TakesTheLargestDepthAndNotOneMore) {
  const auto nested = [](std::size_t depth) {
    return plist(repeated("<array>", depth) + repeated("</array>", depth));
  };
  EXPECT_TRUE(readXMLPropertyList(nested(PropertyListLimits{}.depth)));
  EXPECT_EQ(readXMLPropertyList(nested(PropertyListLimits{}.depth + 1)).error().kind,
            PropertyListErrorKind::kTooDeep);
  EXPECT_EQ(readXMLPropertyList(repeated("<plist><array>", 100'000)).error().kind,
            PropertyListErrorKind::kStructure);
}

TEST(XMLPropertyListReader, TakesAsManyValuesAndBytesAsTheLimitsAllow) {
  const std::string bytes = plist("<array><true/><true/></array>");
  EXPECT_TRUE(readXMLPropertyList(bytes, {.objects = 3}));
  EXPECT_EQ(outcome(readXMLPropertyList(bytes, {.objects = 2})), "many 1:35");
  EXPECT_TRUE(readXMLPropertyList(bytes, {.bytes = bytes.size()}));
  EXPECT_EQ(outcome(readXMLPropertyList(bytes, {.bytes = bytes.size() - 1})), "large 0:57");
}

}  // namespace
}  // namespace vt
