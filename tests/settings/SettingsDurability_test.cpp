// What is left of the settings file when the disk is full, the process is killed, or bytes are
// lost.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <random>
#include <vector>

#include "foundation/Array.h"
#include "foundation/PropertyList.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "settings/VTSettings.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::shared_ptr<Dictionary> savedGlobals(const TestWorld& world) {
  const auto root = readPropertyList(readFile(world.settingsFile()));
  const auto tree = root ? root->dictionary() : nullptr;
  const Value* globals = tree ? tree->find("GlobalSettings") : nullptr;
  return globals ? globals->dictionary() : nullptr;
}

TEST(SettingsDurability, LeavesTheOldFileOnAFullDisk) {
  TestWorld world;
  const std::string folder = world.root() / "Library/Application Support";
  if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=64k") != 0) {
    GTEST_SKIP() << "only root can mount a small file system";
  }
  const auto settings = VTSettings::sharedInstance();
  settings->setValue(std::string(20'000, 'o'), "large");
  const std::string before = readFile(world.settingsFile());
  const LogCapture log;
  settings->setValue(std::string(100'000, 'n'), "large");
  EXPECT_EQ(readFile(world.settingsFile()), before);
  EXPECT_EQ(savedGlobals(world)->get("large"), Value(std::string(20'000, 'o')));
  // What is in memory stays in force, and is saved once there is room.
  EXPECT_EQ(settings->valueForKey("large"), Value(std::string(100'000, 'n')));
  EXPECT_THAT(log.lines(), ElementsAre(HasSubstr("No space left on device")));
  settings->setValue("small", "large");
  EXPECT_EQ(savedGlobals(world)->get("large"), Value("small"));
  EXPECT_EQ(::umount(folder.c_str()), 0);
}

// Removes what killed savers left beside the settings file; answers how many files that were.
int removeLeftovers(const TestWorld& world) {
  const auto folder = std::filesystem::path(world.settingsFile()).parent_path();
  std::vector<std::filesystem::path> leftovers;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().filename().string().starts_with(".Settings.plist.tmp-")) {
      leftovers.push_back(entry.path());
    }
  }
  for (const auto& leftover : leftovers) std::filesystem::remove(leftover);
  return static_cast<int>(leftovers.size());
}

// Saves one version after the other, from `first` on, until it is killed.
[[noreturn]] void saveForEver(VTSettings& settings, std::int64_t first) {
  for (std::int64_t version = first;; ++version) {
    const auto globals = settings.globalSettings();
    globals->set("first", version);
    globals->set("payload", std::string(20'000, static_cast<char>('a' + version % 26)));
    globals->set("last", version);
    settings.saveStorage();
  }
}

TEST(SettingsDurability, HoldsOneWholeVersionWheneverTheSaverIsKilled) {
  constexpr int kKills = 500;
  constexpr unsigned kSeed = 20251121;
  TestWorld world;
  // What a killed process had written is the kernel's, so the disk itself need not be waited for;
  // a wait like that for a fast one has many a kill fall between two steps of a save.
  world.files().skipSyncs(std::chrono::microseconds(500));
  const auto settings = VTSettings::sharedInstance();
  settings->setSaveSettingsOnChanges(/*save=*/false);
  settings->setValue(0, "first");
  settings->setValue(0, "last");
  settings->setValue(std::string(20'000, 'a'), "payload");
  ASSERT_TRUE(settings->saveStorage());
  std::mt19937 random(kSeed);
  long longestWait = 3'000'000;  // ns; follows the machine, so that about half the kills come late
  int killedInASave = 0;
  int killedAfterASave = 0;
  for (int kill = 0; kill < kKills; ++kill) {
    SCOPED_TRACE(testing::Message() << "kill " << kill << ", seed " << kSeed);
    const pid_t saver = ::fork();
    ASSERT_GE(saver, 0);
    const std::int64_t firstVersion = std::int64_t{kill} * 1'000'000 + 1;
    if (saver == 0) saveForEver(*settings, firstVersion);
    const timespec moment{0, std::uniform_int_distribution<long>(0, longestWait)(random)};
    ::nanosleep(&moment, nullptr);
    ASSERT_EQ(::kill(saver, SIGKILL), 0);
    ASSERT_EQ(::waitpid(saver, nullptr, 0), saver);
    const auto globals = savedGlobals(world);
    ASSERT_NE(globals, nullptr);
    const std::int64_t version = globals->get("first")->integerValue();
    ASSERT_EQ(globals->get("last"), Value(version));
    ASSERT_EQ(globals->get("payload"),
              Value(std::string(20'000, static_cast<char>('a' + version % 26))));
    killedInASave += removeLeftovers(world);
    const bool hasSaved = version >= firstVersion;
    killedAfterASave += hasSaved ? 1 : 0;
    longestWait += (hasSaved ? -1 : 1) * longestWait / 32;
    longestWait = std::clamp(longestWait, 500'000L, 500'000'000L);
  }
  EXPECT_GT(killedInASave, kKills / 10) << "hardly a save was under way when it was killed";
  EXPECT_GT(killedAfterASave, kKills / 10) << "hardly a saver got to the end of a save";
}

TEST(SettingsDurability, TakesTheFileTruncatedAnywhereAsEmptyAndKeepsIt) {
  std::string whole;
  {
    const TestWorld world;
    const auto settings = VTSettings::sharedInstance();
    settings->setSearchFolders(ObjectArray<VTSearchFolder>::make(
        {VTConcreteSearchFolder::initWithPath("/Data", "D\xc3\xa4ta")}));
    settings->setValue(Data("\x01\x02"), "registrationdata");
    whole = readFile(world.settingsFile());
  }
  // The whole file less its last line feed, or less none, still is one.
  const std::size_t end = whole.rfind('>') + 1;
  TestWorld world;
  world.files().skipSyncs();
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    SCOPED_TRACE(length);
    const std::string bytes = whole.substr(0, length);
    world.writeSettingsFile(bytes);
    std::filesystem::remove(world.settingsFile() + ".damaged");
    world.restart();
    const auto settings = VTSettings::sharedInstance();
    const bool loads = length >= end;
    ASSERT_EQ(settings->searchFolders()->size(), loads ? 1U : 0U);
    ASSERT_TRUE(settings->saveStorage());
    ASSERT_EQ(readFile(world.settingsFile() + ".damaged"), loads ? "" : bytes);
  }
}

}  // namespace
}  // namespace vt
