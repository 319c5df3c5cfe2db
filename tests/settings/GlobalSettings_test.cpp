#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "foundation/PropertyList.h"
#include "settings/VTSettings.h"
#include "support/ChangeJournal.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::shared_ptr<Dictionary> savedTree(const TestWorld& world) {
  const auto root = readPropertyList(readFile(world.settingsFile()));
  return root ? root->dictionary() : nullptr;
}

std::shared_ptr<Dictionary> savedGlobals(const TestWorld& world) {
  return savedTree(world)->find("GlobalSettings")->dictionary();
}

TEST(GlobalSettings, StoreAndSaveAKeyThatIsNotDeclared) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue("blue", "theme");
  EXPECT_EQ(settings->valueForKey("theme"), Value("blue"));
  EXPECT_EQ(savedGlobals(world)->get("theme"), Value("blue"));
}

TEST(GlobalSettings, AnswerNilForAKeyThatWasNeverSet) {
  const TestWorld world;
  EXPECT_EQ(VTSettings::sharedInstance()->valueForKey("theme"), std::nullopt);
}

TEST(GlobalSettings, RemoveAndSaveAKeyThatIsSetToNil) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue("blue", "theme");
  settings->setValue(std::nullopt, "theme");
  EXPECT_EQ(settings->valueForKey("theme"), std::nullopt);
  EXPECT_FALSE(savedGlobals(world)->contains("theme"));
}

TEST(GlobalSettings, AreAnnouncedByTheirName) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  ChangeJournal journal;
  journal.observe(*settings, "theme");
  journal.observe(*settings, "mailEnabled");
  settings->setValue("blue", "theme");
  settings->setValue(true, "mailEnabled");
  settings->setValue(std::nullopt, "theme");
  EXPECT_THAT(journal.lines(), ElementsAre("will theme", "did theme", "will mailEnabled",
                                           "did mailEnabled", "will theme", "did theme"));
}

TEST(GlobalSettings, AreSavedBetweenTheAnnouncements) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  std::vector<bool> saved;
  const Observation observation =
      settings->addObserver("theme", [&](std::string_view, ChangePhase) {
        saved.push_back(Platform::current().files().exists(world.settingsFile()));
      });
  settings->setValue("blue", "theme");
  EXPECT_THAT(saved, ElementsAre(false, true));
}

TEST(GlobalSettings, StayInMemoryWhileChangesAreNotSaved) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setSaveSettingsOnChanges(/*save=*/false);
  settings->setValue("blue", "theme");
  EXPECT_FALSE(Platform::current().files().exists(world.settingsFile()));
  EXPECT_TRUE(settings->saveStorage());
  EXPECT_EQ(savedGlobals(world)->get("theme"), Value("blue"));
  settings->setValue("red", "theme");
  settings->reloadConfig();
  EXPECT_EQ(settings->valueForKey("theme"), Value("blue"));
}

TEST(GlobalSettings, AreTheDictionaryInsideTheTree) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const auto globals = settings->globalSettings();
  EXPECT_EQ(settings->globalSettings(), globals);
  EXPECT_EQ(settings->valueForKey("globalSettings")->dictionary(), globals);
  globals->set("theme", "blue");
  EXPECT_EQ(settings->valueForKey("theme"), Value("blue"));
  EXPECT_FALSE(Platform::current().files().exists(world.settingsFile()));
}

TEST(GlobalSettings, TakeAWriteToAReadOnlyKeyTheUndefinedWay) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue("/elsewhere", "logFile");
  EXPECT_EQ(settings->globalSettings()->get("logFile"), Value("/elsewhere"));
  EXPECT_THAT(settings->logFile(), HasSubstr("/tmp/Vistaro.log"));
}

TEST(GlobalSettings, FailToSaveWhatNoPropertyListHolds) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue("blue", "theme");
  const std::string before = readFile(world.settingsFile());
  settings->setServerRestartNecessary(/*necessary=*/true);
  const LogCapture log;
  settings->setValue(Value(nullptr), "theme");
  EXPECT_THAT(log.lines(),
              ElementsAre(StartsWith("Unable to create property list for storage with error: ")));
  EXPECT_EQ(readFile(world.settingsFile()), before);
  EXPECT_TRUE(settings->serverRestartNecessary());
  EXPECT_FALSE(settings->saveStorage());
}

TEST(GlobalSettings, LeaveAValueOfTheWrongTypeUntilOneIsStored) {
  TestWorld world;
  world.writeSettingsFile(
      "{ GlobalSettings = text; Users = (a); SearchFolders = text; other = x; }");
  const std::string before = readFile(world.settingsFile());
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(settings->valueForKey("theme"), std::nullopt);
  EXPECT_TRUE(settings->searchFolders()->empty());
  EXPECT_TRUE(settings->saveStorage());
  EXPECT_EQ(savedTree(world)->get("GlobalSettings"), Value("text"));
  EXPECT_EQ(savedTree(world)->get("Users"), Value(Array::make({"a"})));
  settings->setValue("blue", "theme");
  EXPECT_EQ(savedGlobals(world)->get("theme"), Value("blue"));
  const auto kept = readPropertyList(readFile(world.settingsFile() + ".damaged"));
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->dictionary()->get("GlobalSettings"), Value("text"));
  EXPECT_NE(readFile(world.settingsFile()), before);
}

TEST(GlobalSettings, HoldTheStartupUserWithoutNeedOfARestart) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(settings->startupUserId(), std::nullopt);
  settings->setValue(501, "startupUserId");
  EXPECT_EQ(settings->startupUserId(), Value(501));
  EXPECT_EQ(savedGlobals(world)->get("startupUserId"), Value(501));
  EXPECT_FALSE(settings->serverRestartNecessary());
}

}  // namespace
}  // namespace vt
