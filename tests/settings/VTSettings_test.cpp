#include "settings/VTSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "directory/VTUser.h"
#include "foundation/Array.h"
#include "foundation/PropertyList.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

std::shared_ptr<Dictionary> savedTree(const TestWorld& world) {
  const auto root = readPropertyList(readFile(world.settingsFile()));
  return root ? root->dictionary() : nullptr;
}

TEST(VTSettings, IsOneObjectForTheProcess) {
  TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(VTSettings::sharedInstance(), settings);
  world.restart();
  EXPECT_NE(VTSettings::sharedInstance(), settings);
}

TEST(VTSettings, SeedsTheRandomGeneratorOnceWhenFirstUsed) {
  TestWorld world;
  EXPECT_EQ(world.process().seedRandomCalls(), 0);
  VTSettings::settingsStoragePath();
  VTSettings::sharedInstance();
  VTSettings::sharedInstance()->reloadConfig();
  EXPECT_EQ(world.process().seedRandomCalls(), 1);
}

TEST(VTSettings, StartsSavingChangesAndWithoutNeedOfARestart) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_TRUE(settings->saveSettingsOnChanges());
  EXPECT_FALSE(settings->serverRestartNecessary());
  EXPECT_EQ(settings->searchCount(), 0U);
  EXPECT_EQ(settings->parallelUserCount(), 0U);
}

TEST(VTSettings, NamesTheFixedPathsAndMakesNothing) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const std::string root = world.root();
  EXPECT_EQ(settings->logFile(), root + "/tmp/Vistaro.log");
  EXPECT_EQ(settings->cacheDirectory(), root + "/Library/Caches/Vistaro");
  EXPECT_EQ(settings->thumbnailCacheDirectory(), root + "/Library/Caches/Vistaro/Thumbnails");
  EXPECT_FALSE(Platform::current().files().exists(settings->cacheDirectory()));
}

TEST(VTSettings, KeepsTheVeryArrayOfSearchFolders) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const auto folders = ObjectArray<VTSearchFolder>::make();
  settings->setSearchFolders(folders);
  EXPECT_EQ(settings->searchFolders(), folders);
}

TEST(VTSettings, StoresSearchFoldersAndSavesWhileChangesAreSaved) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  const auto folders = ObjectArray<VTSearchFolder>::make({folder});
  settings->setSearchFolders(folders);
  EXPECT_EQ(savedTree(world)->get("SearchFolders"),
            Value(VTSearchFolder::serializedDataFromFolderArray(*folders)));
  settings->setSaveSettingsOnChanges(/*save=*/false);
  settings->setSearchFolders(ObjectArray<VTSearchFolder>::make());
  EXPECT_EQ(savedTree(world)->find("SearchFolders")->array()->size(), 1U);
  EXPECT_FALSE(settings->serverRestartNecessary());
}

TEST(VTSettings, SetsItsOwnArrayAndAnElementOfItAgain) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setSearchFolders(
      ObjectArray<VTSearchFolder>::make({VTConcreteSearchFolder::initWithPath("/a", "A")}));
  settings->setSearchFolders(settings->searchFolders());
  ASSERT_EQ(settings->searchFolders()->size(), 1U);
  const auto& element = settings->searchFolders()->at(0);
  settings->setSearchFolders(ObjectArray<VTSearchFolder>::make({element}));
  EXPECT_EQ(settings->searchFolders()->at(0)->title(), "A");
}

TEST(VTSettings, TakesNilAsNoSearchFolders) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setSearchFolders(nullptr);
  ASSERT_NE(settings->searchFolders(), nullptr);
  EXPECT_TRUE(settings->searchFolders()->empty());
  EXPECT_TRUE(savedTree(world)->find("SearchFolders")->array()->empty());
}

TEST(VTSettings, ChangesNothingForAFolderWithoutStoredForm) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const auto before = settings->searchFolders();
  EXPECT_THROW(settings->setSearchFolders(
                   ObjectArray<VTSearchFolder>::make({VTSearchFolder::initWithTitle("bare")})),
               InvalidArgumentError);
  EXPECT_EQ(settings->searchFolders(), before);
}

TEST(VTSettings, FailsToSaveAFolderWithoutTitle) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue("blue", "theme");
  const std::string before = readFile(world.settingsFile());
  const LogCapture log;
  settings->setSearchFolders(ObjectArray<VTSearchFolder>::make(
      {VTConcreteSearchFolder::initWithPath("/a", std::nullopt)}));
  EXPECT_EQ(readFile(world.settingsFile()), before);
  EXPECT_EQ(settings->searchFolders()->size(), 1U);
  EXPECT_EQ(log.lines().size(), 1U);
}

TEST(VTSettings, FindsTheFirstTopLevelFolderOfATitle) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const auto first = VTConcreteSearchFolder::initWithPath("/1", "A");
  const auto second = VTConcreteSearchFolder::initWithPath("/2", "A");
  const auto group = VTSearchFolderGroup::initWithTitle("G");
  group->addFolder(VTConcreteSearchFolder::initWithPath("/3", "inner"));
  settings->setSearchFolders(ObjectArray<VTSearchFolder>::make({group, first, second}));
  EXPECT_EQ(settings->searchFolderForTitle("A"), first);
  EXPECT_EQ(settings->searchFolderForTitle("a"), nullptr);
  EXPECT_EQ(settings->searchFolderForTitle("inner"), nullptr);
}

TEST(VTSettings, ReadsAndWritesItsOwnStateByKeyWithoutStoringIt) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue(7, "searchCount");
  settings->setValue(2, "parallelUserCount");
  settings->setValue(false, "saveSettingsOnChanges");
  settings->setValue(true, "serverRestartNecessary");
  settings->setValue(Value(ObjectArray<VTSearchFolder>::make()), "searchFolders");
  EXPECT_EQ(settings->valueForKey("searchCount"), Value(7));
  EXPECT_EQ(settings->valueForKey("parallelUserCount"), Value(2));
  EXPECT_EQ(settings->valueForKey("saveSettingsOnChanges"), Value(false));
  EXPECT_EQ(settings->valueForKey("serverRestartNecessary"), Value(true));
  EXPECT_EQ(settings->valueForKey("logFile"), Value(settings->logFile()));
  EXPECT_TRUE(settings->globalSettings()->empty());
}

}  // namespace
}  // namespace vt
