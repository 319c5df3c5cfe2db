#include "directory/VTUser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <numeric>

#include "DirectoryWorld.h"
#include "directory/DirServiceWrapper.h"
#include "foundation/Array.h"
#include "kinds/VTSearchKind.h"
#include "platform/linux/FolderResources.h"
#include "platform/linux/PosixFiles.h"
#include "platform/memory/MemoryHost.h"
#include "saved/VTSavedSearch.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "settings/VTSettings.h"
#include "support/Places.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::int32_t> groupsOf(const VTUser& user) {
  std::vector<std::int32_t> groups;
  for (const std::int32_t* group = user.groups(); group; ++group) {
    groups.push_back(*group);
    if (*group == -1) break;
  }
  return groups;
}

class VTUserTest : public testing::Test {
 protected:
  VTUserTest() {
    std::filesystem::create_directories(folder_ / "Library/Application Support");
    world_.emplace(services());
  }

  Platform::Services services() const {
    Platform::Services services;
    services.files = std::make_shared<PosixFiles>();
    services.resources = std::make_shared<FolderResources>(resourceFolder());
    services.host = std::make_shared<MemoryHost>(std::vector<std::string>{"server"});
    services.rootPrefix = folder_.path();
    return services;
  }

  /// Puts everything away but what is on disk.
  void restart() {
    world_.reset();
    world_.emplace(services());
  }

  std::shared_ptr<VTUser> ann() { return VTUser::userWithName("ann"); }
  static VTSettings& settings() { return *VTSettings::sharedInstance(); }

  TemporaryFolder folder_;
  std::optional<DirectoryWorld> world_;
};

TEST_F(VTUserTest, IsReadFromItsRecord) {
  const auto user = ann();
  ASSERT_NE(user, nullptr);
  EXPECT_EQ(user->username(), "ann");
  EXPECT_EQ(user->fullname(), "Ann Example");
  EXPECT_EQ(user->uid(), 501U);
  EXPECT_EQ(user->gid(), 20U);
  EXPECT_FALSE(user->administrator());
}

TEST_F(VTUserTest, HasTheRecordsOwnNameWhateverItWasFoundBy) {
  DirectoryRecord record = userRecord("bob", "502", "20", "Bob");
  record.attributes[0].values = {"bob", "robert"};
  world_->records->add(record);
  world_->identity->setGroups("robert", {80});
  world_->identity->setGroups("bob", {81});
  const auto user = VTUser::userWithName("robert");
  EXPECT_EQ(user->username(), "bob");
  EXPECT_THAT(groupsOf(*user), ElementsAre(80, -1)) << "groups are those of the name as given";
}

TEST_F(VTUserTest, IsNilWithoutARecordOrADirectory) {
  EXPECT_EQ(VTUser::userWithName("nobody"), nullptr);
  EXPECT_EQ(VTUser::userWithName(""), nullptr);
  EXPECT_EQ(VTUser::userWithName(std::string("ann\0x", 5)), nullptr);
  world_->records->add({kDSStdRecordTypeUsers, "nameless", {{kDS1AttrUniqueID, {"1"}}}});
  EXPECT_EQ(VTUser::userWithName("nameless"), nullptr);
  world_->services->refuse("dsOpenDirService");
  EXPECT_EQ(ann(), nullptr);
  EXPECT_THAT(world_->log, IsEmpty());
}

TEST_F(VTUserTest, NeedsTheRightPasswordWhereOneIsGiven) {
  EXPECT_EQ(VTUser::userWithName("ann", "secret")->uid(), 501U);
  EXPECT_EQ(VTUser::userWithName("ann", "wrong"), nullptr);
  EXPECT_EQ(VTUser::userWithName("ann", ""), nullptr);
  EXPECT_EQ(VTUser::userWithName("ann", std::string("secret\0x", 8)), nullptr);
  EXPECT_EQ(VTUser::userWithName(std::string("ann\0x", 5), "secret"), nullptr);
  EXPECT_EQ(VTUser::userWithName("nobody", "secret"), nullptr);
}

TEST_F(VTUserTest, OpensOneSessionForPasswordAndRecord) {
  VTUser::userWithName("ann", "secret");
  EXPECT_EQ(std::ranges::count(world_->services->calls(), "dsOpenDirService"), 1);
  const auto wrapper = DirServiceWrapper::init();
  world_->services->forgetCalls();
  EXPECT_NE(VTUser::initWithUsername("ann", wrapper), nullptr);
  EXPECT_EQ(std::ranges::count(world_->services->calls(), "dsOpenDirService"), 0);
}

TEST_F(VTUserTest, KeepsNothingOfTheDirectoryWhateverFails) {
  expectNothingKeptWhateverFails([](DirectoryWorld&) { VTUser::userWithName("ann", "secret"); });
}

TEST_F(VTUserTest, ReadsIdsAsSigned32BitNumbers) {
  struct Case {
    const char* text;
    std::uint64_t id;
  };
  const Case cases[] = {
      {"0", 0},      {"501", 501}, {"12 apples", 12},          {"apples", 0},
      {"-2", ~1ULL}, {"", 0},      {"2147483648", 2147483647}, {"4294967296", 2147483647},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    world_->records->add(userRecord(std::string("u") + c.text, c.text, c.text, "U"));
    const auto user = VTUser::userWithName(std::string("u") + c.text);
    EXPECT_EQ(user->uid(), c.id);
    EXPECT_EQ(user->gid(), c.id);
  }
}

TEST_F(VTUserTest, IsAnAdministratorByFullNameOrByShortName) {
  struct Case {
    const char* what;
    std::vector<std::string> members;
    bool administrator;
  };
  const Case cases[] = {
      {"full name alone", {"root", "Ann Example"}, true},
      {"short name", {"root", "ann"}, true},
      {"neither", {"root", "Ann", "annn"}, false},
      {"none", {}, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    restart();
    EXPECT_FALSE(ann()->administrator()) << "without the group";
    world_->records->add(groupRecord("admin", c.members));
    EXPECT_EQ(ann()->administrator(), c.administrator);
  }
}

TEST_F(VTUserTest, IsNoAdministratorWhenTheGroupFitsNoBuffer) {
  world_->records->add(groupRecord("admin", {"ann", std::string(2048, 'x')}));
  EXPECT_FALSE(ann()->administrator());
}

TEST_F(VTUserTest, AsksForNoMoreOfARecordThanItUses) {
  DirectoryRecord bob = userRecord("bob", "502", "20", "Bob");
  bob.attributes.push_back({"dsAttrTypeStandard:JPEGPhoto", {std::string(3000, 'x')}});
  world_->records->add(bob);
  DirectoryRecord admin = groupRecord("admin", {"bob"});
  admin.attributes.push_back({"dsAttrTypeStandard:Comment", {std::string(3000, 'x')}});
  world_->records->add(admin);
  const auto user = VTUser::userWithName("bob");
  ASSERT_NE(user, nullptr);
  EXPECT_TRUE(user->administrator());
}

TEST_F(VTUserTest, HasItsFurtherGroupsWithoutThePrimaryOneAndAnEndMark) {
  EXPECT_EQ(ann()->groups(), nullptr);
  world_->identity->setGroups("ann", {20});
  EXPECT_EQ(ann()->groups(), nullptr);
  world_->identity->setGroups("ann", {20, 80, 501});
  EXPECT_THAT(groupsOf(*ann()), ElementsAre(80, 501, -1));
}

TEST_F(VTUserTest, HasAtMost255FurtherGroups) {
  std::vector<std::int32_t> groups(300);
  std::iota(groups.begin(), groups.end(), 1000);
  world_->identity->setGroups("ann", groups);
  const std::vector<std::int32_t> kept = groupsOf(*ann());
  ASSERT_EQ(kept.size(), 256U);
  EXPECT_EQ(kept.front(), 1000);
  EXPECT_EQ(kept[254], 1254);
  EXPECT_EQ(kept.back(), -1);
}

TEST_F(VTUserTest, CountsItselfOnceWhileItIsLoggedIn) {
  const auto first = ann();
  const auto second = ann();
  const std::uint64_t before = settings().parallelUserCount();
  first->logout();
  EXPECT_EQ(settings().parallelUserCount(), before);
  first->login();
  first->login();
  second->login();
  EXPECT_EQ(settings().parallelUserCount(), before + 2);
  first->logout();
  first->logout();
  EXPECT_EQ(settings().parallelUserCount(), before + 1);
}

TEST_F(VTUserTest, IsStillCountedWhenItIsDestroyedLoggedIn) {
  ann()->login();
  EXPECT_EQ(settings().parallelUserCount(), 1U);
}

TEST_F(VTUserTest, KeepsItsStorageInsideTheSettings) {
  const auto storage = ann()->userStorage();
  EXPECT_EQ(storage, settings().storageForUser(*ann()));
  EXPECT_TRUE(storage->empty());
}

TEST_F(VTUserTest, IsTheSettingsDefaultWhenTheDirectoryHasRoot) {
  EXPECT_EQ(settings().defaultUser(), nullptr);
  world_->records->add(userRecord("root", "0", "0", "System Administrator"));
  EXPECT_EQ(settings().defaultUser()->username(), "root");
}

TEST_F(VTUserTest, HasDefaultsThatAreNotStored) {
  const auto user = ann();
  EXPECT_EQ(user->resultsPerPage(), Value(25U));
  EXPECT_EQ(user->resultsPerPage().kind(), ValueKind::kUnsignedInteger);
  EXPECT_EQ(user->defaultAction(), 0);
  EXPECT_EQ(user->defaultSearchFolder(), nullptr);
  EXPECT_EQ(user->defaultSearchKind(), nullptr);
  EXPECT_EQ(user->savedSearches()->size(), 0U);
  EXPECT_TRUE(user->userStorage()->empty());
}

TEST_F(VTUserTest, SavesEachPreferenceAtOnceUnderItsKey) {
  const auto kind = VTSearchKind::allSearchKinds()->at(0);
  ann()->setResultsPerPage(Value(50));
  restart();
  ann()->setDefaultAction(-1);
  restart();
  ann()->setDefaultSearchFolder(VTConcreteSearchFolder::initWithPath("/srv", "Data"));
  restart();
  ann()->setDefaultSearchKind(VTSearchKind::initWithTitle(kind->title(), nullptr));
  restart();
  EXPECT_EQ(*ann()->userStorage(), *Dictionary::make({{"resultsPerPage", 50},
                                                      {"defaultAction", 4294967295U},
                                                      {"deaultSearchFolderTitle", "Data"},
                                                      {"deaultSearchKindTitle", kind->title()}}));
  EXPECT_EQ(ann()->resultsPerPage(), Value(50));
  EXPECT_EQ(ann()->defaultAction(), -1);
  EXPECT_EQ(ann()->defaultSearchKind()->title(), kind->title());
}

TEST_F(VTUserTest, KeepsTheStoragesOfUsersApart) {
  world_->records->add(userRecord("bob", "502", "20", "Bob"));
  ann()->setDefaultAction(1);
  VTUser::userWithName("bob")->setDefaultAction(2);
  EXPECT_EQ(ann()->defaultAction(), 1);
}

TEST_F(VTUserTest, GivesBackTheObjectStoredForResultsPerPageAndRefusesNil) {
  const auto user = ann();
  user->setResultsPerPage(Value("all"));
  EXPECT_EQ(user->resultsPerPage(), Value("all"));
  EXPECT_THROW(user->setResultsPerPage(std::nullopt), InvalidArgumentError);
  EXPECT_THROW(user->setResultsPerPage(Value(nullptr)), InvalidArgumentError);
  EXPECT_EQ(user->resultsPerPage(), Value("all"));
}

TEST_F(VTUserTest, FindsItsDefaultFolderByTitleAtAnyDepthInOrder) {
  const auto inner = VTConcreteSearchFolder::initWithPath("/inner", "Data");
  const auto group = VTSearchFolderGroup::initWithTitle("Group");
  group->addFolder(inner);
  const auto later = VTConcreteSearchFolder::initWithPath("/later", "Data");
  settings().setSearchFolders(ObjectArray<VTSearchFolder>::make({group, later}));
  const auto user = ann();
  user->setDefaultSearchFolder(later);
  EXPECT_EQ(user->defaultSearchFolder(), inner);
  user->setDefaultSearchFolder(group);
  EXPECT_EQ(user->defaultSearchFolder(), group);
  group->setTitle("Renamed");
  EXPECT_EQ(user->defaultSearchFolder(), nullptr);
  user->userStorage()->set("deaultSearchFolderTitle", 12);
  EXPECT_EQ(user->defaultSearchFolder(), nullptr);
}

TEST_F(VTUserTest, ForgetsADefaultFolderOrKindThatIsSetToNil) {
  const auto user = ann();
  user->setDefaultSearchFolder(VTConcreteSearchFolder::initWithPath("/srv", "Data"));
  user->setDefaultSearchKind(VTSearchKind::initWithTitle("Kind", nullptr));
  EXPECT_EQ(user->userStorage()->size(), 2U);
  EXPECT_EQ(user->defaultSearchKind(), nullptr) << "no kind has the title";
  user->setDefaultSearchFolder(nullptr);
  EXPECT_FALSE(user->userStorage()->contains("deaultSearchFolderTitle"));
  user->setDefaultSearchKind(nullptr);
  EXPECT_TRUE(user->userStorage()->empty());
  EXPECT_THROW(
      user->setDefaultSearchFolder(VTConcreteSearchFolder::initWithPath("/", std::nullopt)),
      InvalidArgumentError);
}

TEST_F(VTUserTest, SavesItsSearchesAtOnce) {
  const auto titles = [&] {
    std::vector<std::string> found;
    const auto searches = ann()->savedSearches();
    for (const auto& search : *searches) found.push_back(*search->title());
    return found;
  };
  ann()->addSavedSearch(*VTSavedSearch::initWithQuery("a", "Reports"));
  restart();
  ann()->addSavedSearch(*VTSavedSearch::initWithQuery("b", "Letters"));
  ann()->addSavedSearch(*VTSavedSearch::initWithQuery("c", "Reports"));
  restart();
  EXPECT_THAT(titles(), ElementsAre("Letters", "Reports"));
  EXPECT_EQ(ann()->savedSearches()->at(1)->query(), "c");
  EXPECT_NE(ann()->savedSearches(), ann()->savedSearches());
  ann()->removeSavedSearch(*VTSavedSearch::initWithQuery(std::nullopt, "Reports"));
  restart();
  EXPECT_THAT(titles(), ElementsAre("Letters"));
}

TEST_F(VTUserTest, IsReadAndSetByKey) {
  const auto user = ann();
  EXPECT_EQ(user->valueForKey("uid"), Value(501U));
  EXPECT_EQ(user->valueForKey("gid"), Value(20U));
  EXPECT_EQ(user->valueForKey("username"), Value("ann"));
  EXPECT_EQ(user->valueForKey("fullname"), Value("Ann Example"));
  EXPECT_EQ(user->valueForKey("administrator"), Value(false));
  user->setValue(Value(10), "resultsPerPage");
  user->setValue(Value(3), "defaultAction");
  user->setValue(Value(VTConcreteSearchFolder::initWithPath("/srv", "Data")),
                 "defaultSearchFolder");
  EXPECT_EQ(user->valueForKey("resultsPerPage"), Value(10));
  EXPECT_EQ(user->valueForKey("defaultAction"), Value(3));
  EXPECT_EQ(user->valueForKey("defaultSearchFolder"), std::nullopt) << "no folder has the title";
  const auto kind = VTSearchKind::allSearchKinds()->at(0);
  user->setValue(Value(kind), "defaultSearchKind");
  EXPECT_EQ(user->valueForKey("defaultSearchKind"), Value(kind));
  user->setValue(nullptr, "defaultSearchKind");
  EXPECT_EQ(user->valueForKey("defaultSearchKind"), std::nullopt);
}

TEST_F(VTUserTest, TakesPreferencesAloneByKeyAndNilOnlyForObjects) {
  const auto user = ann();
  for (const char* key : {"uid", "gid", "username", "fullname", "administrator", "groups",
                          "loggedIn", "savedSearches", "userStorage"}) {
    SCOPED_TRACE(key);
    EXPECT_THROW(user->setValue(1, key), UndefinedKeyError);
  }
  EXPECT_THROW(user->valueForKey("groups"), UndefinedKeyError);
  EXPECT_THROW(user->setValue(nullptr, "defaultAction"), InvalidArgumentError);
  EXPECT_THROW(user->setValue(nullptr, "resultsPerPage"), InvalidArgumentError);
  EXPECT_THROW(user->setValue("Data", "defaultSearchFolder"), InvalidArgumentError);
  EXPECT_TRUE(user->userStorage()->empty());
}

}  // namespace
}  // namespace vt
