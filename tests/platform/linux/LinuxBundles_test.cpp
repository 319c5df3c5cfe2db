#include "platform/linux/LinuxBundles.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

class LinuxBundlesTest : public testing::Test {
 protected:
  void write(const std::string& path, const std::string& bytes) const {
    const std::filesystem::path file = root_.path() / path;
    std::filesystem::create_directories(file.parent_path());
    writeFile(file, bytes);
  }
  LinuxBundles bundles(std::vector<std::string> languages = {},
                       std::vector<ShippedStrings> shipped = {}) const {
    return {root_.path(), std::move(languages), std::move(shipped)};
  }

  TemporaryFolder root_;
};

TEST_F(LinuxBundlesTest, AreEmptyWhereTheInformationIsDamaged) {
  for (const char* bytes : {"", "<plist>", "<plist><array/></plist>", "just a word"}) {
    SCOPED_TRACE(bytes);
    write("a.bundle/Contents/Info.plist", bytes);
    const auto information = bundles().infoDictionary("/a.bundle");
    ASSERT_NE(information, nullptr);
    EXPECT_TRUE(information->empty());
  }
}

TEST_F(LinuxBundlesTest, AreNoneWhereAFileStandsInTheirPlace) {
  write("a.bundle", "a file");
  EXPECT_EQ(bundles().infoDictionary("/a.bundle"), nullptr);
}

TEST_F(LinuxBundlesTest, ReadAFrameworkToo) {
  write("a.framework/Resources/Info.plist", "{ CFBundleVersion = 3; }");
  write("a.framework/Resources/English.lproj/t.strings", "key = text;");
  EXPECT_EQ(bundles().infoDictionary("/a.framework")->get("CFBundleVersion"), Value("3"));
  EXPECT_EQ(bundles().localizedStringForKey("/a.framework", "key", "", "t"), "text");
}

TEST_F(LinuxBundlesTest, TakeEachTextFromTheFirstLanguageThatHasIt) {
  const std::string resources = "a.bundle/Contents/Resources/";
  write(resources + "t.strings", "a = none; b = none; c = none; d = none;");
  write(resources + "en.lproj/t.strings", "a = en; b = en; c = en;");
  write(resources + "de.lproj/t.strings", "a = de; b = de;");
  write(resources + "de_AT.lproj/t.strings", "a = at;");
  LinuxBundles austrian = bundles({"de_AT", "de"});
  EXPECT_EQ(austrian.localizedStringForKey("/a.bundle", "a", "", "t"), "at");
  EXPECT_EQ(austrian.localizedStringForKey("/a.bundle", "b", "", "t"), "de");
  EXPECT_EQ(austrian.localizedStringForKey("/a.bundle", "c", "", "t"), "en");
  EXPECT_EQ(austrian.localizedStringForKey("/a.bundle", "d", "", "t"), "none");
  EXPECT_EQ(bundles().localizedStringForKey("/a.bundle", "a", "", "t"), "en");
}

TEST_F(LinuxBundlesTest, PassOverATableThatIsDamagedOrHoldsNoText) {
  write("a.bundle/Contents/Resources/de.lproj/t.strings", "a = ");
  write("a.bundle/Contents/Resources/en.lproj/t.strings", "a = (1); b = text;");
  LinuxBundles german = bundles({"de"});
  EXPECT_EQ(german.localizedStringForKey("/a.bundle", "a", "?", "t"), "?");
  EXPECT_EQ(german.localizedStringForKey("/a.bundle", "b", "?", "t"), "text");
}

TEST_F(LinuxBundlesTest, StayWithinTheBundle) {
  write("secret.strings", "a = secret;");
  std::filesystem::create_directories(root_.path() / "a.bundle/Contents/Resources");
  EXPECT_EQ(bundles().localizedStringForKey("/a.bundle", "a", "?", "../../../secret"), "?");
}

TEST_F(LinuxBundlesTest, LetAShippedTableStandForABundleThatIsNotThere) {
  const ShippedStrings shipped{"/a.bundle", "t", {{"key", "shipped"}}};
  EXPECT_EQ(bundles({}, {shipped}).localizedStringForKey("/a.bundle", "key", "?", "t"), "shipped");
  EXPECT_EQ(bundles({}, {shipped}).localizedStringForKey("/a.bundle", "key", "?", "u"), "?");
  EXPECT_EQ(bundles({}, {shipped}).localizedStringForKey("/b.bundle", "key", "?", "t"), "?");
  EXPECT_EQ(bundles({}, {shipped}).infoDictionary("/a.bundle"), nullptr);
  std::filesystem::create_directory(root_.path() / "a.bundle");
  EXPECT_EQ(bundles({}, {shipped}).localizedStringForKey("/a.bundle", "key", "?", "t"), "?");
}

}  // namespace
}  // namespace vt
