// What all Bundles promise, from property lists on the file system and from a table.

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/linux/LinuxBundles.h"
#include "platform/memory/MemoryBundles.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr const char* kPane = "/Library/PreferencePanes/Some.prefPane";
constexpr const char* kEmpty = "/Library/PreferencePanes/Empty.prefPane";

void write(const TemporaryFolder& root, const std::string& path, const std::string& bytes) {
  const std::filesystem::path file = root.path() / path.substr(1);
  std::filesystem::create_directories(file.parent_path());
  writeFile(file, bytes);
}

std::shared_ptr<Bundles> linuxBundles() {
  static const TemporaryFolder root;
  write(
      root, std::string(kPane) + "/Contents/Info.plist",
      "<plist version=\"1.0\"><dict><key>CFBundleVersion</key><string>12</string></dict></plist>");
  write(root, std::string(kPane) + "/Contents/Resources/en.lproj/words.strings",
        "\"hello\" = \"Hello\"; \"blank\" = \"\";");
  std::filesystem::create_directories(root.path() / (kEmpty + 1));
  return std::make_shared<LinuxBundles>(root.path(), std::vector<std::string>{},
                                        std::vector<ShippedStrings>{});
}

std::shared_ptr<Bundles> memoryBundles() {
  auto bundles = std::make_shared<MemoryBundles>();
  bundles->add(kPane, Dictionary::make({{"CFBundleVersion", "12"}}));
  bundles->addString(kPane, "words", "hello", "Hello");
  bundles->addString(kPane, "words", "blank", "");
  bundles->add(kEmpty);
  return bundles;
}

class BundlesContract : public testing::TestWithParam<std::shared_ptr<Bundles> (*)()> {};

INSTANTIATE_TEST_SUITE_P(, BundlesContract, testing::Values(&linuxBundles, &memoryBundles));

TEST_P(BundlesContract, TellWhatABundleSaysOfItself) {
  const auto information = GetParam()()->infoDictionary(kPane);
  ASSERT_NE(information, nullptr);
  EXPECT_EQ(information->get("CFBundleVersion"), Value("12"));
  EXPECT_EQ(information->get("CFBundleShortVersionString"), std::nullopt);
}

TEST_P(BundlesContract, TellABundleThatSaysNothingFromNone) {
  const auto information = GetParam()()->infoDictionary(kEmpty);
  ASSERT_NE(information, nullptr);
  EXPECT_TRUE(information->empty());
  EXPECT_EQ(GetParam()()->infoDictionary("/Library/PreferencePanes/None.prefPane"), nullptr);
}

TEST_P(BundlesContract, LookTextsUpInATable) {
  const auto bundles = GetParam()();
  EXPECT_EQ(bundles->localizedStringForKey(kPane, "hello", "?", "words"), "Hello");
  EXPECT_EQ(bundles->localizedStringForKey(kPane, "blank", "?", "words"), "");
}

TEST_P(BundlesContract, GiveTheValueOfTheCallerForWhatIsMissing) {
  const auto bundles = GetParam()();
  EXPECT_EQ(bundles->localizedStringForKey(kPane, "bye", "?", "words"), "?");
  EXPECT_EQ(bundles->localizedStringForKey(kPane, "hello", "?", "other"), "?");
  EXPECT_EQ(bundles->localizedStringForKey(kPane, "bye", "", "words"), "");
  EXPECT_EQ(bundles->localizedStringForKey("/nowhere", "hello", "?", "words"), "?");
}

}  // namespace
}  // namespace vt
