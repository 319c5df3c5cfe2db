#include "search/WebLinkFile.h"

#include <gtest/gtest.h>

#include <string>

namespace vt {
namespace {

std::string xml(const std::string& body) {
  return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0">)" + body + "</plist>";
}

/// `<KIND>` opened `levels` times and closed again.
std::string nested(const std::string& before, const std::string& after, int levels) {
  std::string text;
  for (int i = 0; i < levels; ++i) text += before;
  for (int i = 0; i < levels; ++i) text += after;
  return text;
}

/// A dictionary of the one entry "URL": "http://a.b/", as binary property lists have it.
std::string binaryLink() {
  std::string bytes = "bplist00";
  bytes += std::string("\xD1\x01\x02", 3);  // at 8: one entry, key object 1, value object 2
  bytes += "\x53URL";                       // at 11
  bytes += "\x5Bhttp://a.b/";               // at 15
  const std::size_t offsets = bytes.size();
  bytes += std::string("\x08\x0B\x0F", 3);
  bytes += std::string(6, '\0') + "\x01\x01";                     // sizes of offset and reference
  bytes += std::string(7, '\0') + "\x03" + std::string(8, '\0');  // objects, the root
  bytes += std::string(7, '\0') + static_cast<char>(offsets);
  return bytes;
}

TEST(WebLinkFile, IsToldByItsExtensionToTheLetter) {
  struct Case {
    const char* path;
    bool isWebLink;
  };
  const Case cases[] = {
      {"/a/page.webloc", true},      {"/a/page.webhistory", true},
      {"/a/b.c.webloc", true},       {"/a/page.WEBLOC", false},
      {"/a/page.webloc2", false},    {"/a/page.web", false},
      {"/a/pagewebloc", false},      {"/a/webloc", false},
      {"/a/.webloc", false},         {"/a.webloc/page", false},
      {"/a/page.webloc.txt", false}, {"/a/page.webloc ", false},
      {"/a/page.webloc/", false},    {"", false},
      {"page.webloc", true},         {"/a/odd\xff.webloc", true},
      {"/a/page.url", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(isWebLinkPath(c.path), c.isWebLink);
  }
}

TEST(WebLinkFile, HoldsItsAddressUnderURL) {
  struct Case {
    const char* what;
    std::string bytes;
    std::optional<std::string> address;
  };
  const Case cases[] = {
      {"XML", xml("<dict><key>URL</key><string>http://a.b/</string></dict>"), "http://a.b/"},
      {"binary", binaryLink(), "http://a.b/"},
      {"old style", "{ URL = \"http://a.b/\"; }", "http://a.b/"},
      {"among others",
       xml("<dict><key>Name</key><string>x</string><key>URL</key><string>y</string></dict>"), "y"},
      {"empty", xml("<dict><key>URL</key><string/></dict>"), ""},
      {"any text", xml("<dict><key>URL</key><string>javascript:x</string></dict>"), "javascript:x"},
      {"no such key", xml("<dict><key>Url</key><string>y</string></dict>"), std::nullopt},
      {"no keys", xml("<dict/>"), std::nullopt},
      {"number", xml("<dict><key>URL</key><integer>1</integer></dict>"), std::nullopt},
      {"date", xml("<dict><key>URL</key><date>2026-11-21T00:00:00Z</date></dict>"), std::nullopt},
      {"data", xml("<dict><key>URL</key><data>eA==</data></dict>"), std::nullopt},
      {"array", xml("<dict><key>URL</key><array><string>y</string></array></dict>"), std::nullopt},
      {"dictionary", xml("<dict><key>URL</key><dict/></dict>"), std::nullopt},
      {"array as root", xml("<array><string>URL</string><string>y</string></array>"), std::nullopt},
      {"text as root", xml("<string>http://a.b/</string>"), std::nullopt},
      {"no property list", "[InternetShortcut]\nURL=http://a.b/\n", std::nullopt},
      {"cut short", xml("<dict><key>URL</key><string>http://a.b/").substr(0, 90), std::nullopt},
      {"binary cut short", binaryLink().substr(0, 40), std::nullopt},
      {"nothing", "", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(webLinkInFile(c.bytes), c.address);
  }
}

TEST(WebLinkFile, IsNoneWhenItUnfoldsTooFar) {
  struct Case {
    const char* what;
    std::string value;
  };
  const Case cases[] = {
      {"deep arrays", nested("<array>", "</array>", 10'000)},
      {"deep dictionaries", nested("<dict><key>k</key>", "</dict>", 10'000)},
      {"many values", "<array>" + nested("<true/>", "", 20'000) + "</array>"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(webLinkInFile(xml("<dict><key>URL</key><string>y</string><key>other</key>" + c.value +
                                "</dict>")),
              std::nullopt);
  }
  EXPECT_EQ(webLinkInFile(nested("(", ")", 10'000)), std::nullopt);
}

}  // namespace
}  // namespace vt
