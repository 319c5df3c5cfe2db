// What the settings keep for each user.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "directory/DirectoryWorld.h"
#include "directory/VTUser.h"
#include "foundation/PropertyList.h"
#include "platform/linux/PosixFiles.h"
#include "settings/VTSettings.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

/// Settings in real files, and a directory in memory with the users ann (501) and ben (502).
class UserStorage : public testing::Test {
 protected:
  UserStorage() { restart(); }

  /// What a new process would find.
  void restart() {
    directory_.reset();
    Platform::Services services;
    services.files = std::make_shared<PosixFiles>();
    services.rootPrefix = files_.root();
    directory_.emplace(std::move(services));
    directory_->records->add(userRecord("ben", "502", "20", "Ben Example"));
  }

  void startWithFile(const std::string& bytes) {
    files_.writeSettingsFile(bytes);
    restart();
  }

  DirectoryWorld& directory() { return *directory_; }
  static std::shared_ptr<VTUser> ann() { return VTUser::userWithName("ann"); }
  static std::shared_ptr<VTUser> ben() { return VTUser::userWithName("ben"); }
  static VTSettings& settings() { return *VTSettings::sharedInstance(); }

  /// The value under "Users" in the file.
  std::optional<Value> savedUsers() const {
    const auto root = readPropertyList(readFile(files_.settingsFile()));
    return root ? root->dictionary()->get("Users") : std::nullopt;
  }
  std::string savedFile() const { return readFile(files_.settingsFile()); }
  std::string keptFile() const { return readFile(files_.settingsFile() + ".damaged"); }

 private:
  TestWorld files_;
  std::optional<DirectoryWorld> directory_;
};

Value usersOf(const char* key, std::initializer_list<std::pair<std::string_view, Value>> storage) {
  return Dictionary::make({{key, Dictionary::make(storage)}});
}

TEST_F(UserStorage, IsOneDictionaryUnderTheUserId) {
  const auto storage = settings().storageForUser(*ann());
  EXPECT_EQ(settings().storageForUser(*ann()), storage);
  storage->set("colour", "red");
  ASSERT_TRUE(settings().saveStorage());
  EXPECT_EQ(savedUsers(), usersOf("501", {{"colour", "red"}}));
}

TEST_F(UserStorage, IsTheDictionaryThatWasLoaded) {
  startWithFile("{ Users = { 501 = { colour = red; }; }; }");
  EXPECT_EQ(settings().storageForUser(*ann())->get("colour"), Value("red"));
  EXPECT_TRUE(settings().storageForUser(*ben())->empty());
}

TEST_F(UserStorage, IsNotSavedByBeingMade) {
  startWithFile("{ Users = { 502 = { }; }; }");
  const std::string before = savedFile();
  settings().storageForUser(*ann());
  EXPECT_EQ(savedFile(), before);
  settings().reloadConfig();
  ASSERT_TRUE(settings().saveStorage());
  EXPECT_EQ(savedUsers(), usersOf("502", {}));
}

TEST_F(UserStorage, IsAnotherDictionaryAfterAReload) {
  const auto storage = settings().storageForUser(*ann());
  storage->set("colour", "red");
  settings().reloadConfig();
  EXPECT_NE(settings().storageForUser(*ann()), storage);
  EXPECT_TRUE(settings().storageForUser(*ann())->empty());
}

TEST_F(UserStorage, HasTheUserIdAsASignedNumberOf32Bits) {
  directory().records->add(userRecord("nobody", "-2", "-2", "Unprivileged User"));
  settings().storageForUser(*VTUser::userWithName("nobody"));
  ASSERT_TRUE(settings().saveStorage());
  EXPECT_EQ(savedUsers(), usersOf("-2", {}));
}

TEST_F(UserStorage, ThatReplacesAnotherDropsEveryOtherUser) {
  startWithFile("{ Users = { 501 = { colour = red; }; 502 = { colour = blue; }; }; Other = x; }");
  const auto storage = Dictionary::make({{"colour", "green"}});
  settings().setStorage(storage, *ann());
  EXPECT_EQ(savedUsers(), usersOf("501", {{"colour", "green"}}));
  EXPECT_EQ(settings().storageForUser(*ann()), storage);
  EXPECT_TRUE(settings().storageForUser(*ben())->empty());
}

TEST_F(UserStorage, IsSavedByItsReplacementEvenWhileChangesAreNot) {
  settings().setSaveSettingsOnChanges(/*save=*/false);
  settings().setServerRestartNecessary(/*necessary=*/true);
  settings().setStorage(Dictionary::make(), *ann());
  EXPECT_EQ(savedUsers(), usersOf("501", {}));
  EXPECT_FALSE(settings().serverRestartNecessary());
}

TEST_F(UserStorage, GoesIntoItsOwnUsersWhereItHoldsThem) {
  startWithFile("{ Users = { 501 = { colour = red; }; 502 = { colour = blue; }; }; }");
  const std::optional<Value> before = savedUsers();
  const auto inner = Dictionary::make();
  const auto storage = Dictionary::make({{"Users", inner}});
  settings().setStorage(storage, *ann());
  EXPECT_EQ(inner->find("501")->dictionary(), storage);
  EXPECT_EQ(settings().storageForUser(*ann())->get("colour"), Value("red"));
  EXPECT_EQ(savedUsers(), before);
  EXPECT_THAT(savedFile(), StartsWith("<?xml")) << "it was not saved";
  inner->remove("501");
}

TEST_F(UserStorage, CannotBeSavedOnceTheTreeHoldsItself) {
  startWithFile("{ Users = { 501 = { Users = { }; }; }; }");
  const std::string before = savedFile();
  const auto storage = settings().storageForUser(*ann());
  settings().setStorage(storage, *ann());
  EXPECT_EQ(savedFile(), before);
  EXPECT_THAT(directory().log,
              ElementsAre(StartsWith("Unable to create property list for storage with error: ")));
  storage->find("Users")->dictionary()->remove("501");
}

TEST_F(UserStorage, TakesAnInnerUsersOfAnotherTypeAsNone) {
  settings().setStorage(Dictionary::make({{"Users", "nobody"}}), *ann());
  EXPECT_EQ(savedUsers(), usersOf("501", {{"Users", "nobody"}}));
}

TEST_F(UserStorage, KeepsTheFileInWhichItFindsNoDictionary) {
  struct Case {
    const char* what;
    const char* file;
    void (*change)();
  };
  const auto change = +[] {
    settings().storageForUser(*ann())->set("colour", "red");
    settings().saveStorage();
  };
  const auto replace =
      +[] { settings().setStorage(Dictionary::make({{"colour", "red"}}), *ann()); };
  const Case cases[] = {
      {"text for all users, changed in place", "{ Users = everybody; }", change},
      {"text for one user, changed in place", "{ Users = { 501 = ann; }; }", change},
      {"a list of users, replaced", "{ Users = ( ann, ben ); }", replace},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::filesystem::remove(*VTSettings::settingsStoragePath() + ".damaged");
    startWithFile(c.file);
    c.change();
    EXPECT_EQ(savedUsers(), usersOf("501", {{"colour", "red"}}));
    EXPECT_EQ(keptFile(), c.file);
    EXPECT_THAT(directory().log, IsEmpty());
  }
}

TEST_F(UserStorage, IsKeptForTheDefaultUserAsForAnyOther) {
  EXPECT_EQ(settings().defaultUser(), nullptr) << "the directory has no root";
  directory().records->add(userRecord("root", "0", "0", "System Administrator"));
  const auto root = settings().defaultUser();
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->username(), "root");
  EXPECT_EQ(root->uid(), 0U);
  settings().setStorage(Dictionary::make(), *root);
  EXPECT_EQ(savedUsers(), usersOf("0", {}));
}

}  // namespace
}  // namespace vt
