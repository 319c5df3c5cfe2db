#include "foundation/XMLPropertyListWriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"
#include "foundation/VTObject.h"
#include "foundation/XMLPropertyListReader.h"
#include "support/PropertyListTesting.h"

namespace vt {
namespace {

using testing::HasSubstr;

constexpr std::string_view kStart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view kEnd = "</plist>\n";

std::string body(const Value& root) {
  const auto xml = writeXMLPropertyList(root);
  if (!xml) return xml.error().description();
  EXPECT_TRUE(xml->starts_with(kStart));
  EXPECT_TRUE(xml->ends_with(kEnd));
  return xml->substr(kStart.size(), xml->size() - kStart.size() - kEnd.size());
}

TEST(XMLPropertyListWriter, WritesContainersWithTabsInTheOrderOfTheKeys) {
  const auto root = Dictionary::make({{"b", Array::make({1, Dictionary::make()})},
                                      {"a", Dictionary::make({{"x", true}})},
                                      {"", Array::make()}});
  EXPECT_EQ(body(root),
            "<dict>\n"
            "\t<key>b</key>\n"
            "\t<array>\n"
            "\t\t<integer>1</integer>\n"
            "\t\t<dict/>\n"
            "\t</array>\n"
            "\t<key>a</key>\n"
            "\t<dict>\n"
            "\t\t<key>x</key>\n"
            "\t\t<true/>\n"
            "\t</dict>\n"
            "\t<key></key>\n"
            "\t<array/>\n"
            "</dict>\n");
}

TEST(XMLPropertyListWriter, WritesEachKindOfLeaf) {
  using namespace std::chrono;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const Date beforeEpoch = sys_days{1969y / 12 / 31} + 23h + 59min + 59s + 999ms;
  struct Case {
    const char* what;
    Value value;
    const char* xml;
  };
  const Case cases[] = {
      {"false", false, "<false/>\n"},
      {"least", std::numeric_limits<std::int64_t>::min(),
       "<integer>-9223372036854775808</integer>\n"},
      {"most", std::numeric_limits<std::uint64_t>::max(),
       "<integer>18446744073709551615</integer>\n"},
      {"shortest real", 0.1, "<real>0.1</real>\n"},
      {"whole real", 1.0, "<real>1</real>\n"},
      {"negative zero", -0.0, "<real>-0</real>\n"},
      {"infinity", kInfinity, "<real>+infinity</real>\n"},
      {"negative infinity", -kInfinity, "<real>-infinity</real>\n"},
      {"not a number", std::numeric_limits<double>::quiet_NaN(), "<real>nan</real>\n"},
      {"fraction of a second", beforeEpoch, "<date>1969-12-31T23:59:59Z</date>\n"},
      {"first date", Date{sys_days{1y / 1 / 1}}, "<date>0001-01-01T00:00:00Z</date>\n"},
      {"last date", Date{sys_days{10000y / 1 / 1}} - microseconds{1},
       "<date>9999-12-31T23:59:59Z</date>\n"},
      {"markup", "<a> & \"b\"'", "<string>&lt;a&gt; &amp; \"b\"'</string>\n"},
      {"line ends", "a\tb\nc\rd", "<string>a\tb\nc&#13;d</string>\n"},
      {"beyond ASCII", "\xC3\xA4\xF0\x9F\x98\x80", "<string>\xC3\xA4\xF0\x9F\x98\x80</string>\n"},
      {"empty data", Data(), "<data>\n</data>\n"},
      {"data", Data(std::string_view("\x00\xFF", 2)), "<data>\nAP8=\n</data>\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(body(c.value), c.xml);
  }
}

TEST(XMLPropertyListWriter, BreaksDataIntoLines) {
  const std::string line(76, 'A');
  EXPECT_EQ(body(Array::make({Data(std::string(58, '\0'))})),
            "<array>\n\t<data>\n\t" + line + "\n\tAA==\n\t</data>\n</array>\n");
}

TEST(XMLPropertyListWriter, RefusesWhatNoListHoldsAndNamesThePlace) {
  using namespace std::chrono;
  struct Case {
    const char* what;
    Value value;
    PropertyListErrorKind kind;
  };
  const Case cases[] = {
      {"null", nullptr, PropertyListErrorKind::kUnsupported},
      {"object", std::make_shared<VTObject>(), PropertyListErrorKind::kUnsupported},
      {"bad UTF-8", "a\xFF", PropertyListErrorKind::kInvalidText},
      {"surrogate", "\xED\xA0\x80", PropertyListErrorKind::kInvalidText},
      {"control character", "a\x1Bz", PropertyListErrorKind::kInvalidText},
      {"NUL", std::string("a\0b", 3), PropertyListErrorKind::kInvalidText},
      {"U+FFFE", "\xEF\xBF\xBE", PropertyListErrorKind::kInvalidText},
      {"U+FFFF", "\xEF\xBF\xBF", PropertyListErrorKind::kInvalidText},
      {"year 0", Date{sys_days{1y / 1 / 1}} - microseconds{1},
       PropertyListErrorKind::kInvalidValue},
      {"year 10000", Date{sys_days{10000y / 1 / 1}}, PropertyListErrorKind::kInvalidValue},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(writeXMLPropertyList(c.value).error().kind, c.kind);
    const auto root = Dictionary::make({{"users", Array::make({1, c.value})}});
    const auto nested = writeXMLPropertyList(root);
    ASSERT_FALSE(nested);
    EXPECT_EQ(nested.error().kind, c.kind);
    EXPECT_THAT(nested.error().text, HasSubstr("/users/1: "));
    EXPECT_EQ(nested.error().line, 0U);
  }
}

TEST(XMLPropertyListWriter, RefusesAKeyThatXMLCannotHold) {
  const auto error = writeXMLPropertyList(Dictionary::make({{"a\x01", 1}})).error();
  EXPECT_EQ(error.kind, PropertyListErrorKind::kInvalidText);
  EXPECT_THAT(error.text, HasSubstr("U+0001"));
}

TEST(XMLPropertyListWriter, WritesTheLargestDepthAndNotOneMore) {
  const auto xml = writeXMLPropertyList(nestedArrays(PropertyListLimits{}.depth));
  ASSERT_TRUE(xml);
  EXPECT_TRUE(readXMLPropertyList(*xml));
  EXPECT_EQ(writeXMLPropertyList(nestedArrays(PropertyListLimits{}.depth + 1)).error().kind,
            PropertyListErrorKind::kTooDeep);
}

TEST(XMLPropertyListWriter, RefusesACycle) {
  const auto array = Array::make();
  array->append(Dictionary::make({{"again", array}}));
  EXPECT_EQ(writeXMLPropertyList(array).error().kind, PropertyListErrorKind::kTooDeep);
  array->elements().clear();
}

TEST(XMLPropertyListWriter, WritesAsManyValuesAndBytesAsTheLimitsAllow) {
  const auto root = Array::make({true, Data(std::string(1000, 'x')), std::string(1000, 'x')});
  const std::size_t size = writeXMLPropertyList(root)->size();
  EXPECT_TRUE(writeXMLPropertyList(root, {.objects = 4}));
  EXPECT_EQ(writeXMLPropertyList(root, {.objects = 3}).error().kind,
            PropertyListErrorKind::kTooManyObjects);
  EXPECT_TRUE(writeXMLPropertyList(root, {.bytes = size}));
  EXPECT_EQ(writeXMLPropertyList(root, {.bytes = size - 1}).error().kind,
            PropertyListErrorKind::kTooLarge);
}

TEST(XMLPropertyListWriter, StopsEarlyWhenASmallTreeUnfoldsToTooMuch) {
  // Shared four times at thirty levels: 4^30 values from thirty-one arrays.
  Value shared = Array::make();
  for (int level = 0; level < 30; ++level) shared = Array::make({shared, shared, shared, shared});
  EXPECT_EQ(writeXMLPropertyList(shared, {.objects = 10'000}).error().kind,
            PropertyListErrorKind::kTooManyObjects);
}

TEST(XMLPropertyListWriter, WritesASharedContainerInEachPlace) {
  const auto shared = Array::make({1});
  EXPECT_EQ(dump(*readXMLPropertyList(*writeXMLPropertyList(Array::make({shared, shared})))),
            "[[i1],[i1]]");
}

}  // namespace
}  // namespace vt
