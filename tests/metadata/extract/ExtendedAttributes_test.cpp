#include "metadata/extract/ExtendedAttributes.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

#include "foundation/Array.h"
#include "metadata/live/Descriptor.h"
#include "support/PropertyListTesting.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

std::string textObject(std::string_view text) {
  std::string hex = fmt::format("{:02x}", 0x50 + text.size());  // up to 14 letters
  for (const char letter : text) hex += fmt::format("{:02x}", static_cast<unsigned char>(letter));
  return hex;
}

/// A binary property list of a list of texts.
std::string listOf(const std::vector<std::string>& texts) {
  std::vector<std::string> objects = {fmt::format("{:02x}", 0xa0 + texts.size())};
  for (const std::string& text : texts) {
    objects.front() += fmt::format("{:02x}", objects.size());
    objects.push_back(textObject(text));
  }
  return binaryPropertyList(objects);
}

class ExtendedAttributes : public testing::Test {
 protected:
  ExtendedAttributes() { writeFile(folder_ / "file", ""); }

  void set(const std::string& name, const std::string& value) {
    ASSERT_EQ(::setxattr((folder_ / "file").c_str(), name.c_str(), value.data(), value.size(), 0),
              0)
        << name;
  }

  std::map<std::string, Value> told() const {
    const Descriptor file(::open((folder_ / "file").c_str(), O_RDONLY | O_CLOEXEC));
    return extendedAttributesOf(file.get());
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(ExtendedAttributes, AreThoseOfDesktops) {
  set("user.xdg.tags", "red, Bericht M\xc3\xa4rz,,red");
  set("user.xdg.comment", " to be read \n");
  set("user.xdg.origin.url", "https://example.org/file");
  set("user.xdg.referrer.url", "https://example.org/");
  const std::map<std::string, Value> wanted = {
      {"kMDItemUserTags", Array::make({"red", "Bericht M\xc3\xa4rz"})},
      {"kMDItemFinderComment", "to be read"},
      {"kMDItemWhereFroms", Array::make({"https://example.org/file", "https://example.org/"})}};
  EXPECT_EQ(told(), wanted);
}

TEST_F(ExtendedAttributes, AreThoseThatFileServersKeepForMacs) {
  struct Case {
    const char* what;
    const char* before;
    const char* colon;
    const char* after;
    std::string end;
  };
  const Case cases[] = {
      {"as they are called there", "user.com.apple.metadata", ":", "", ""},
      {"as streams", "user.DosStream.com.apple.metadata", ":", ":$DATA", std::string(1, '\0')},
      {"as streams with another colon", "user.DosStream.com.apple.metadata", "\xef\x80\xa2",
       ":$DATA", std::string(1, '\0')},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto nameOf = [&](const char* name) {
      return std::string(c.before) + c.colon + name + c.after;
    };
    set(nameOf("_kMDItemUserTags"), listOf({"red\n6", "Work"}) + c.end);
    set(nameOf("kMDItemFinderComment"), binaryPropertyList({textObject("a comment")}) + c.end);
    set(nameOf("kMDItemWhereFroms"), listOf({"https://a.b/c"}) + c.end);
    set(nameOf("kMDItemIsScreenCapture"), binaryPropertyList({"09"}) + c.end);
    set(nameOf("kMDItemDownloadedDate"),
        binaryPropertyList({"a101", "330000000000000000"}) + c.end);
    const std::map<std::string, Value> wanted = {
        {"kMDItemUserTags", Array::make({"red", "Work"})},
        {"kMDItemFinderComment", "a comment"},
        {"kMDItemWhereFroms", Array::make({"https://a.b/c"})},
        {"kMDItemIsScreenCapture", true},
        {"kMDItemDownloadedDate", Array::make({kReferenceDate})}};
    EXPECT_EQ(told(), wanted);
  }
}

TEST_F(ExtendedAttributes, AreJoinedWhereBothKeepThem) {
  set("user.com.apple.metadata:_kMDItemUserTags", listOf({"red\n6"}));
  set("user.xdg.tags", "red,blue");
  set("user.com.apple.metadata:kMDItemFinderComment", binaryPropertyList({textObject("of a Mac")}));
  set("user.xdg.comment", "of a desktop");
  const std::map<std::string, Value> wanted = {{"kMDItemUserTags", Array::make({"red", "blue"})},
                                               {"kMDItemFinderComment", "of a Mac"}};
  EXPECT_EQ(told(), wanted);
}

TEST_F(ExtendedAttributes, AreNotTakenFromWhatMakesNoSense) {
  set("user.com.apple.metadata:_kMDItemUserTags", "bplist00 no more");
  set("user.com.apple.metadata:kMDItemFinderComment", listOf({"a", "list"}));
  set("user.com.apple.metadata:kMDItemWhereFroms", binaryPropertyList({"10ff"}));
  set("user.com.apple.metadata:kMDItemIsScreenCapture", "yes");
  set("user.com.apple.metadata:kMDItemTitle", binaryPropertyList({textObject("not read")}));
  set("user.xdg.tags", " , ");
  set("user.xdg.comment", "");
  EXPECT_EQ(told(), (std::map<std::string, Value>()));
}

TEST_F(ExtendedAttributes, AreNoneOfAFileThatHasNone) { EXPECT_TRUE(told().empty()); }

TEST_F(ExtendedAttributes, AreToldByTheNamesInAList) {
  EXPECT_TRUE(hasExtendedAttributes(std::string_view("user.other\0user.xdg.tags\0", 25)));
  EXPECT_FALSE(hasExtendedAttributes(std::string_view("user.other\0security.selinux\0", 28)));
  EXPECT_FALSE(hasExtendedAttributes("xdg.tags"));
  EXPECT_FALSE(hasExtendedAttributes(""));
}

TEST_F(ExtendedAttributes, HaveNamesThatNoneBeyondTheListHas) {
  set("user.xdg.tags", "a");
  set("user.xdg.comment", "b");
  set("user.xdg.origin.url", "c");
  const auto names = extendedAttributeNames();
  for (const auto& [name, value] : told()) {
    EXPECT_NE(std::ranges::find(names, name), names.end()) << name;
  }
}

}  // namespace
}  // namespace vt
