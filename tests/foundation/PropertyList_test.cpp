#include "foundation/PropertyList.h"

#include <gtest/gtest.h>

#include "foundation/XMLPropertyListWriter.h"
#include "support/PropertyListTesting.h"
#include "support/RandomPropertyList.h"

namespace vt {
namespace {

using namespace std::string_literals;

TEST(PropertyList, TellsTheFormatsApartByTheirBeginning) {
  struct Case {
    const char* what;
    std::string bytes;
    const char* outcome;
  };
  const Case cases[] = {
      {"nothing", "", "truncated 1:0"},
      {"blanks", " \n", "truncated 2:2"},
      {"byte order mark alone", "\xEF\xBB\xBF", "truncated 1:3"},
      {"binary", binaryPropertyList({"09"}), "true"},
      {"cut binary", "bplist", "truncated 0:6"},
      {"XML", "<?xml version='1.0'?><plist><true/></plist>", "true"},
      {"without declaration", "\n <plist><true/></plist>", "true"},
      {"behind a comment", "<!-- x --><plist><true/></plist>", "true"},
      {"behind a byte order mark", "\xEF\xBB\xBF<plist><true/></plist>", "true"},
      {"UTF-16 without mark", "<\0?\0x\0m\0l\0"s, "truncated 1:0"},
      {"other root", "<html></html>", "structure 1:0"},
      {"root of hexadecimal letters", "<bad/>", "structure 1:0"},
      {"one bracket", "<", "truncated 1:0"},
      {"data", "<0fbd 77>", "x0fbd77"},
      {"long data", "<" + std::string(40, 'a') + ">", "xaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"},
      {"no data", "<>", "x"},
      {"dictionary", "{a = b;}", "{\"a\":s\"b\"}"},
      {"string", "garbage", "s\"garbage\""},
      {"strings file in UTF-16", "\xFF\xFE"s + "a\0=\0b\0;\0"s, "{\"a\":s\"b\"}"},
      {"zero bytes", std::string(20, '\0'), "syntax 1:0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(outcome(readPropertyList(c.bytes)), c.outcome);
  }
}

TEST(PropertyList, IsFoundInNoTruncationOfAnXMLOne) {
  const std::string xml = *writeXMLPropertyList(RandomPropertyList(1).tree());
  ASSERT_TRUE(readPropertyList(xml));
  const std::size_t end = xml.rfind("</plist>") + 8;  // the line feed behind may go
  for (std::size_t size = 0; size < end; ++size) {
    const std::vector<char> cut(xml.begin(), xml.begin() + static_cast<std::ptrdiff_t>(size));
    ASSERT_FALSE(readPropertyList({cut.data(), cut.size()})) << size;
  }
}

TEST(PropertyList, ReadsBackEqualWhatWasWritten) {
  for (std::uint64_t seed = 1; seed <= 400; ++seed) {
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    const Value tree = RandomPropertyList(seed).tree();
    const auto xml = writeXMLPropertyList(tree);
    ASSERT_TRUE(xml) << xml.error().description();
    const auto again = readPropertyList(*xml);
    ASSERT_TRUE(again) << again.error().description();
    ASSERT_EQ(dump(*again), dump(tree));  // order of keys and sign of zero included
    ASSERT_EQ(*again, tree);
  }
}

}  // namespace
}  // namespace vt
