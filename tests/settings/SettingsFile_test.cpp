#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "foundation/Array.h"
#include "foundation/PropertyList.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "settings/VTSettings.h"
#include "support/ChangeJournal.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::shared_ptr<Dictionary> savedTree(const TestWorld& world) {
  const auto root = readPropertyList(readFile(world.settingsFile()));
  return root ? root->dictionary() : nullptr;
}

// Real files whose directories and attributes cannot be changed as often as the test says.
class StubbornFiles : public PosixFiles {
 public:
  StubbornFiles(int failingCreations, bool attributesChange)
      : failingCreations_(failingCreations), attributesChange_(attributesChange) {}

  bool createDirectory(const std::string& path) override {
    journal.push_back("create");
    return failingCreations_-- <= 0 && PosixFiles::createDirectory(path);
  }
  bool changeAttributes(const std::string& path, const std::string& groupOwner,
                        std::uint32_t permissions) override {
    journal.push_back(path.substr(path.find("/Library")) + " " + groupOwner + " " +
                      std::to_string(permissions));
    return attributesChange_;
  }

  std::vector<std::string> journal;

 private:
  int failingCreations_;
  bool attributesChange_;
};

// Real files where another process makes each directory a moment before.
class OvertakenFiles final : public StubbornFiles {
 public:
  OvertakenFiles() : StubbornFiles(/*failingCreations=*/0, /*attributesChange=*/false) {}

  bool createDirectory(const std::string& path) override {
    PosixFiles::createDirectory(path);
    return StubbornFiles::createDirectory(path);
  }
};

struct StubbornWorld {
  StubbornWorld(int failingCreations, bool attributesChange)
      : StubbornWorld(std::make_shared<StubbornFiles>(failingCreations, attributesChange)) {}

  explicit StubbornWorld(std::shared_ptr<StubbornFiles> real)
      : files(std::move(real)), scope(std::make_shared<Platform>(services())) {}

  Platform::Services services() const {
    Platform::Services made;
    made.files = files;
    made.process = std::make_shared<MemoryProcess>();
    made.directoryServices =
        std::make_shared<MemoryDirectoryServices>(std::make_shared<MemoryRecords>());
    made.rootPrefix = world.root();
    return made;
  }

  TestWorld world;
  std::shared_ptr<StubbornFiles> files;
  PlatformScope scope;
};

TEST(SettingsFile, LiesInADirectoryMadeByTheFirstStart) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(VTSettings::settingsStoragePath(), world.settingsFile());
  EXPECT_TRUE(std::filesystem::is_directory(world.root() / "Library/Application Support/Vistaro"));
  EXPECT_FALSE(std::filesystem::exists(world.settingsFile()));
  EXPECT_TRUE(settings->saveStorage());
  EXPECT_THAT(readFile(world.settingsFile()), StartsWith("<?xml"));
  ASSERT_NE(savedTree(world), nullptr);
  struct stat status{};
  ASSERT_EQ(::stat(world.settingsFile().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST(SettingsFile, HasItsDirectoryMadeAnewWhenItIsGone) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  std::filesystem::remove(world.root() / "Library/Application Support/Vistaro");
  EXPECT_TRUE(settings->saveStorage());
}

TEST(SettingsFile, RepairsTheParentAndTriesAgain) {
  StubbornWorld stubborn(/*failingCreations=*/1, /*attributesChange=*/true);
  const LogCapture log;
  EXPECT_EQ(VTSettings::settingsStoragePath(), stubborn.world.settingsFile());
  EXPECT_THAT(stubborn.files->journal,
              ElementsAre("create", "/Library/Application Support admin 509", "create"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(SettingsFile, TakesTheDirectoryThatAnotherProcessMade) {
  StubbornWorld overtaken(std::make_shared<OvertakenFiles>());
  const LogCapture log;
  EXPECT_EQ(VTSettings::settingsStoragePath(), overtaken.world.settingsFile());
  EXPECT_THAT(overtaken.files->journal, ElementsAre("create"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(SettingsFile, HasNoPathWhenTheParentCannotBeRepaired) {
  StubbornWorld stubborn(/*failingCreations=*/9, /*attributesChange=*/false);
  const LogCapture log;
  EXPECT_EQ(VTSettings::settingsStoragePath(), std::nullopt);
  EXPECT_THAT(
      log.lines(),
      ElementsAre("Unable to correct file permissions for /Library/Application Support",
                  "Unable to create storage directory for Vistaro Settings at " +
                      stubborn.world.root().string() + "/Library/Application Support/Vistaro/"));
}

TEST(SettingsFile, HasNoPathWhenTheSecondAttemptFails) {
  StubbornWorld stubborn(/*failingCreations=*/2, /*attributesChange=*/true);
  const LogCapture log;
  EXPECT_EQ(VTSettings::settingsStoragePath(), std::nullopt);
  EXPECT_THAT(
      log.lines(),
      ElementsAre(StartsWith("Unable to create storage directory for Vistaro Settings at ")));
}

TEST(SettingsFile, CannotBeSavedWithoutADirectory) {
  StubbornWorld stubborn(/*failingCreations=*/99, /*attributesChange=*/false);
  const LogCapture log;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_TRUE(settings->searchFolders()->empty());
  settings->setServerRestartNecessary(/*necessary=*/true);
  EXPECT_FALSE(settings->saveStorage());
  EXPECT_THAT(log.lines().back(), StartsWith("Unable to save storage file with error "));
  EXPECT_FALSE(settings->serverRestartNecessary());
}

TEST(SettingsFile, KeepsTopLevelKeysItDoesNotKnow) {
  const TestWorld world;
  world.writeSettingsFile("{ Future = { deep = (1, 2); }; GlobalSettings = { a = b; }; }");
  VTSettings::sharedInstance()->setValue("d", "c");
  const auto deep = Dictionary::make({{"deep", Array::make({"1", "2"})}});
  EXPECT_EQ(savedTree(world)->get("Future"), Value(deep));
}

TEST(SettingsFile, SurvivesANewProcess) {
  TestWorld world;
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Data");
  folder->setDownload(1);
  VTSettings::sharedInstance()->setSearchFolders(ObjectArray<VTSearchFolder>::make({folder}));
  VTSettings::sharedInstance()->setValue(Data("\x01\x02"), "registrationdata");
  world.restart();
  const auto settings = VTSettings::sharedInstance();
  ASSERT_EQ(settings->searchFolders()->size(), 1U);
  EXPECT_EQ(*settings->searchFolders()->at(0)->serializedData(), *folder->serializedData());
  EXPECT_EQ(settings->valueForKey("registrationdata"), Value(Data("\x01\x02")));
}

TEST(SettingsFile, HoldsContainersThatCanBeChangedInPlace) {
  TestWorld world;
  world.writeSettingsFile("{ GlobalSettings = { list = (a); }; }");
  const auto settings = VTSettings::sharedInstance();
  settings->valueForKey("list")->array()->append("b");
  settings->saveStorage();
  EXPECT_EQ(savedTree(world)->find("GlobalSettings")->dictionary()->get("list"),
            Value(Array::make({"a", "b"})));
}

TEST(SettingsFile, ThatDoesNotLoadCountsAsEmptyAndIsKeptOnce) {
  for (const char* bytes : {"", "<plist><dict>", "( a, b )", "just text", "bplist00", "\xff\xfe"}) {
    SCOPED_TRACE(bytes);
    TestWorld world;
    world.writeSettingsFile(bytes);
    const LogCapture log;
    const auto settings = VTSettings::sharedInstance();
    EXPECT_TRUE(settings->searchFolders()->empty());
    EXPECT_TRUE(settings->globalSettings()->empty());
    EXPECT_EQ(readFile(world.settingsFile()), bytes);
    EXPECT_TRUE(settings->saveStorage());
    EXPECT_EQ(readFile(world.settingsFile() + ".damaged"), bytes);
    settings->setValue("blue", "theme");
    EXPECT_EQ(readFile(world.settingsFile() + ".damaged"), bytes);
    ASSERT_NE(savedTree(world), nullptr);
    EXPECT_THAT(log.lines(), IsEmpty());
  }
}

TEST(SettingsFile, ThatDoesNotLoadStaysWhenItCannotBeKept) {
  TestWorld world;
  world.writeSettingsFile("garbage");
  const auto settings = VTSettings::sharedInstance();
  world.files().failAfter(0, ENOSPC);
  const LogCapture log;
  EXPECT_FALSE(settings->saveStorage());
  EXPECT_EQ(readFile(world.settingsFile()), "garbage");
  EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Unable to save storage file with error ")));
  EXPECT_TRUE(settings->saveStorage());
  EXPECT_EQ(readFile(world.settingsFile() + ".damaged"), "garbage");
}

TEST(SettingsFile, ThatDidNotLoadMayBeRemovedBeforeTheNextSave) {
  const TestWorld world;
  world.writeSettingsFile("garbage");
  const auto settings = VTSettings::sharedInstance();
  std::filesystem::remove(world.settingsFile());
  EXPECT_TRUE(settings->saveStorage());
  EXPECT_NE(savedTree(world), nullptr);
}

TEST(SettingsFile, ThatIsAFolderCountsAsEmptyAndCannotBeSaved) {
  TestWorld world;
  std::filesystem::create_directories(world.settingsFile());
  const auto settings = VTSettings::sharedInstance();
  const LogCapture log;
  EXPECT_FALSE(settings->saveStorage());
  EXPECT_TRUE(std::filesystem::is_directory(world.settingsFile()));
}

TEST(SettingsFile, IsLeftAloneByASaveThatFails) {
  TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setValue("blue", "theme");
  const std::string before = readFile(world.settingsFile());
  for (int step = 0; step < 4; ++step) {
    SCOPED_TRACE(step);
    const LogCapture log;
    settings->setServerRestartNecessary(/*necessary=*/true);
    world.files().failAfter(step, EIO);
    settings->setValue("red", "theme");
    ASSERT_TRUE(world.files().didFail());
    EXPECT_EQ(readFile(world.settingsFile()), before);
    EXPECT_EQ(settings->valueForKey("theme"), Value("red"));
    EXPECT_FALSE(settings->serverRestartNecessary());
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("Unable to save storage file with error ")));
  }
}

TEST(SettingsFile, KeepsStoredFoldersThatCannotBeReadUntilFoldersAreSet) {
  TestWorld world;
  world.writeSettingsFile(
      "{ SearchFolders = ( { title = Good; path = \"/g\"; }, { title = Bad; colour = red; } ); }");
  const LogCapture log;
  const auto settings = VTSettings::sharedInstance();
  ASSERT_EQ(settings->searchFolders()->size(), 1U);
  EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("\"colour\"")));
  settings->setValue("blue", "theme");
  EXPECT_EQ(savedTree(world)->find("SearchFolders")->array()->size(), 2U);
  settings->setSearchFolders(settings->searchFolders());
  EXPECT_EQ(savedTree(world)->find("SearchFolders")->array()->size(), 1U);
}

TEST(SettingsFile, AnnouncesThirteenSettingsAfterAReload) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  const std::vector<std::string> keys = {"userAuthenticationDisabled",
                                         "serverName",
                                         "serverPort",
                                         "sslEnabled",
                                         "mailEnabled",
                                         "smtpServerAddress",
                                         "smtpCustomServerPort",
                                         "smtpServerUsername",
                                         "smtpServerPassword",
                                         "smtpServerAuthenticationMode",
                                         "smtpFromEmailAddress",
                                         "smtpDefaultServerPort",
                                         "smtpUseSSL"};
  ChangeJournal journal;
  for (const std::string& key : keys) journal.observe(*settings, key);
  for (const char* key : {"useSSLTestCertificate", "sslCertificatePath", "startupUserId"}) {
    journal.observe(*settings, key);
  }
  settings->reloadConfig();
  std::vector<std::string> expected;
  expected.reserve(2 * keys.size());
  for (const std::string& key : keys) expected.push_back("will " + key);
  for (const std::string& key : keys) expected.push_back("did " + key);
  EXPECT_EQ(journal.lines(), expected);
}

TEST(SettingsFile, IsReplacedInMemoryBeforeTheFirstAnnouncement) {
  const TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  settings->setServerName("old");
  world.writeSettingsFile("{ GlobalSettings = { serverName = new; }; }");
  std::vector<std::string> seen;
  const Observation observation =
      settings->addObserver("serverName", [&](std::string_view, ChangePhase) {
        seen.push_back(settings->serverName().value_or("(nil)"));
      });
  settings->reloadConfig();
  EXPECT_THAT(seen, ElementsAre("new", "new"));
}

TEST(SettingsFile, LoadsTheApplicationEnvironmentWithEveryReload) {
  TestWorld world;
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(world.process().loadApplicationCalls(), 1);
  EXPECT_TRUE(settings->reloadConfig());
  EXPECT_EQ(world.process().loadApplicationCalls(), 2);
}

}  // namespace
}  // namespace vt
