#include "directory/DirServiceWrapper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "DirectoryWorld.h"
#include "foundation/Array.h"

namespace vt {
namespace {

using testing::ElementsAre;

std::shared_ptr<Dictionary> lookUpUser(DirServiceWrapper& wrapper, const char* name,
                                       const char* attr1 = kDSNAttrRecordName,
                                       const char* attr2 = nullptr, const char* attr3 = nullptr) {
  return wrapper.attributeDataForNodeOfType(kDSStdRecordTypeUsers, name, attr1, attr2, attr3,
                                            nullptr, nullptr, nullptr);
}

/// How many bytes ann's record takes in a buffer, asked for its name and "x" of one value.
constexpr std::size_t kFixedSize = (8 + 23 + 3) + (8 + 29) + (4 + 3) + (8 + 1) + 4;

TEST(DirServiceWrapper, IsNilAndHasClosedAllWhenItCannotOpen) {
  for (const char* refused : {"dsOpenDirService", "dsFindDirNodes", "dsOpenDirNode"}) {
    SCOPED_TRACE(refused);
    DirectoryWorld world;
    world.services->refuse(refused);
    EXPECT_EQ(DirServiceWrapper::init(), nullptr);
    EXPECT_EQ(world.services->leaks(), "");
  }
}

TEST(DirServiceWrapper, ClosesTheNodeBeforeTheSessionAndOnlyOnce) {
  DirectoryWorld world;
  auto wrapper = DirServiceWrapper::init();
  world.services->forgetCalls();
  wrapper->cleanup();
  wrapper->cleanup();
  wrapper.reset();
  EXPECT_THAT(world.services->calls(), ElementsAre("dsCloseDirNode", "dsCloseDirService"));
}

TEST(DirServiceWrapper, FindsNothingOnceItIsCleanedUp) {
  DirectoryWorld world;
  const auto wrapper = DirServiceWrapper::init();
  wrapper->cleanup();
  EXPECT_TRUE(lookUpUser(*wrapper, "ann")->empty());
}

TEST(DirServiceWrapper, MapsAttributesToTheirValuesInTheDirectorysOrder) {
  DirectoryWorld world;
  world.records->add({kDSStdRecordTypeUsers,
                      "bob",
                      {{kDSNAttrRecordName, {"bob", "robert", "rob"}}, {"x", {"1"}}}});
  const auto wrapper = DirServiceWrapper::init();
  const auto found = lookUpUser(*wrapper, "bob", "x", kDSNAttrRecordName, "absent");
  EXPECT_EQ(*found,
            *Dictionary::make({{"x", Array::make({"1"})},
                               {kDSNAttrRecordName, Array::make({"bob", "robert", "rob"})}}));
}

TEST(DirServiceWrapper, AsksForTheAttributesUpToTheFirstMissingOne) {
  DirectoryWorld world;
  const auto wrapper = DirServiceWrapper::init();
  const auto found = lookUpUser(*wrapper, "ann", kDSNAttrRecordName, nullptr, kDS1AttrUniqueID);
  EXPECT_EQ(found->size(), 1U);
  EXPECT_TRUE(lookUpUser(*wrapper, "ann", nullptr, kDS1AttrUniqueID)->empty());
}

TEST(DirServiceWrapper, AsksForAllSixAttributes) {
  DirectoryWorld world;
  DirectoryRecord record{kDSStdRecordTypeUsers, "bob", {}};
  for (const char* type : {"1", "2", "3", "4", "5", "6", "7"}) {
    record.attributes.push_back({type, {"x"}});
  }
  world.records->add(record);
  const auto found = DirServiceWrapper::init()->attributeDataForNodeOfType(
      kDSStdRecordTypeUsers, "bob", "1", "2", "3", "4", "5", "6");
  EXPECT_EQ(found->size(), 6U);
  EXPECT_FALSE(found->contains("7"));
}

TEST(DirServiceWrapper, HasNoKeyForAnAttributeWithoutValuesOrWithNoText) {
  DirectoryWorld world;
  world.records->add(
      {kDSStdRecordTypeUsers, "bob", {{"x", {}}, {"y", {"\xE4"}}, {"z", {"", "\xE4", "1"}}}});
  const auto wrapper = DirServiceWrapper::init();
  EXPECT_EQ(*lookUpUser(*wrapper, "bob", "x", "y", "z"),
            *Dictionary::make({{"z", Array::make({"", "1"})}}));
}

TEST(DirServiceWrapper, FindsNothingForNoneOrTwoRecordsOfAName) {
  DirectoryWorld world;
  world.records->add(userRecord("eve", "1", "1", "Eve One"));
  world.records->add(userRecord("eve", "2", "2", "Eve Two"));
  const auto wrapper = DirServiceWrapper::init();
  EXPECT_TRUE(lookUpUser(*wrapper, "nobody")->empty());
  EXPECT_TRUE(lookUpUser(*wrapper, "eve")->empty());
  EXPECT_TRUE(lookUpUser(*wrapper, nullptr)->empty());
  EXPECT_TRUE(lookUpUser(*wrapper, "ANN")->empty());
}

TEST(DirServiceWrapper, FindsNothingForTwoRecordsOfWhichOnlyOneFits) {
  DirectoryWorld world;
  for (int i = 0; i < 2; ++i) {
    world.records->add({kDSStdRecordTypeUsers, "eve", {{"x", {std::string(1500, 'x')}}}});
  }
  const auto wrapper = DirServiceWrapper::init();
  EXPECT_TRUE(lookUpUser(*wrapper, "eve", "x")->empty());
}

TEST(DirServiceWrapper, FindsARecordOfExactly2048BytesAndNoneOfMore) {
  for (const std::size_t excess : {0U, 1U}) {
    SCOPED_TRACE(excess);
    DirectoryWorld world;
    const std::string filler(2048 - kFixedSize + excess, 'f');
    world.records->add(
        {kDSStdRecordTypeUsers, "bob", {{kDSNAttrRecordName, {"bob"}}, {"x", {filler}}}});
    const auto wrapper = DirServiceWrapper::init();
    EXPECT_EQ(lookUpUser(*wrapper, "bob", kDSNAttrRecordName, "x")->empty(), excess > 0);
    // What is not asked for takes no room.
    EXPECT_EQ(lookUpUser(*wrapper, "bob")->size(), 1U);
  }
}

TEST(DirServiceWrapper, ReleasesWhatALookUpTookInOrder) {
  DirectoryWorld world;
  const auto wrapper = DirServiceWrapper::init();
  world.services->forgetCalls();
  lookUpUser(*wrapper, "ann");
  EXPECT_THAT(
      world.services->calls(),
      ElementsAre("dsBuildListFromStringsAlloc", "dsBuildListFromStringsAlloc",
                  "dsBuildListFromStringsAlloc", "dsDataBufferAllocate", "dsGetRecordList",
                  "dsGetRecordEntry", "dsGetAttributeEntry", "dsGetAttributeValue",
                  "dsGetAttributeValue", "dsCloseAttributeValueList",
                  "dsDeallocAttributeValueEntry", "dsDeallocAttributeEntry", "dsCloseAttributeList",
                  "dsDeallocRecordEntry", "dsDataListDeallocate", "dsDataListDeallocate",
                  "dsDataListDeallocate", "dsDataBufferDeAllocate"));
  EXPECT_EQ(world.services->bufferSizes().back(), 2048U);
}

TEST(DirServiceWrapper, KeepsNothingOfALookUpWhateverFails) {
  expectNothingKeptWhateverFails([](DirectoryWorld& world) {
    world.records->add({kDSStdRecordTypeUsers, "bob", {{"x", {"1", "2"}}, {"y", {"3"}}}});
    if (const auto wrapper = DirServiceWrapper::init()) {
      EXPECT_NE(lookUpUser(*wrapper, "bob", "x", "y"), nullptr);
    }
  });
}

struct Login {
  const char* what;
  const char* user;
  const char* password;
  bool accepted;
};

constexpr Login kLogins[] = {
    {"right", "ann", "secret", true},
    {"wrong", "ann", "Secret", false},
    {"empty", "ann", "", false},
    {"unknown", "bob", "secret", false},
    {"no name", "", "secret", false},
    {"null name", nullptr, "secret", false},
    {"null password", "ann", nullptr, false},
};

TEST(DirServiceWrapper, ChecksPasswordsOnEitherBranch) {
  for (const double version : {824.0, 949.0, 949.9, 950.0, 1038.0}) {
    for (const Login& login : kLogins) {
      SCOPED_TRACE(testing::Message() << version << " " << login.what);
      DirectoryWorld world;
      world.process->setAppKitVersionNumber(version);
      const auto wrapper = DirServiceWrapper::init();
      world.services->forgetCalls();
      EXPECT_EQ(wrapper->authenticateUser(login.user, login.password), login.accepted);
      const bool askedServices = !world.services->calls().empty();
      EXPECT_EQ(askedServices, login.user && login.password && version < 950);
      EXPECT_TRUE(world.log.empty());
    }
  }
}

TEST(DirServiceWrapper, AsksOpenDirectoryStepByStep) {
  DirectoryWorld world;
  EXPECT_TRUE(DirServiceWrapper::init()->authenticateUser("ann", "secret"));
  EXPECT_THAT(
      world.bundles->calls(),
      ElementsAre("load /System/Library/Frameworks/OpenDirectory.framework", "classNamed ODSession",
                  "defaultSession", "classNamed ODNode", "nodeWithSession 0x2201",
                  "recordWithRecordType dsRecTypeStandard:Users ann dsAttributesAll",
                  "verifyPassword secret"));
}

TEST(DirServiceWrapper, LogsWhenOpenDirectoryCannotBeLoaded) {
  DirectoryWorld world;
  world.bundles->takeAway("/System/Library/Frameworks/OpenDirectory.framework");
  EXPECT_FALSE(DirServiceWrapper::init()->authenticateUser("ann", "secret"));
  EXPECT_THAT(world.log, ElementsAre("Unableto load OpenDirectory framework"));
}

TEST(DirServiceWrapper, RefusesInSilenceWithoutAClassOfOpenDirectory) {
  for (const char* name : {"ODSession", "ODNode"}) {
    SCOPED_TRACE(name);
    DirectoryWorld world;
    world.bundles->takeAway(name);
    EXPECT_FALSE(DirServiceWrapper::init()->authenticateUser("ann", "secret"));
    EXPECT_TRUE(world.log.empty());
  }
}

class OldSystem : public testing::Test {
 protected:
  OldSystem() { world_.process->setAppKitVersionNumber(949); }

  bool authenticate(const char* user, const char* password) {
    return DirServiceWrapper::init()->authenticateUser(user, password);
  }

  DirectoryWorld world_;
};

TEST_F(OldSystem, ChecksTheCanonicalNameWhateverWasTyped) {
  world_.records->add(
      {kDSStdRecordTypeUsers,
       "robert",
       {{kDSNAttrRecordName, {"bob", "robert"}}, {kDSNAttrMetaNodeLocation, {kDSLocalNodePath}}}});
  world_.records->setPassword("bob", "pw");
  EXPECT_TRUE(authenticate("robert", "pw"));
}

TEST_F(OldSystem, RefusesARecordWithoutAUsableNameOrNode) {
  struct Case {
    const char* what;
    std::vector<DirectoryAttribute> attributes;
  };
  const Case cases[] = {
      {"no name", {{kDSNAttrMetaNodeLocation, {kDSLocalNodePath}}}},
      {"empty name", {{kDSNAttrRecordName, {""}}, {kDSNAttrMetaNodeLocation, {kDSLocalNodePath}}}},
      {"no node", {{kDSNAttrRecordName, {"bob"}}}},
      {"empty node", {{kDSNAttrRecordName, {"bob"}}, {kDSNAttrMetaNodeLocation, {""}}}},
      {"path of nothing", {{kDSNAttrRecordName, {"bob"}}, {kDSNAttrMetaNodeLocation, {"/"}}}},
      {"unknown node", {{kDSNAttrRecordName, {"bob"}}, {kDSNAttrMetaNodeLocation, {"/LDAPv3/x"}}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    DirectoryWorld world;
    world.process->setAppKitVersionNumber(949);
    world.records->add({kDSStdRecordTypeUsers, "bob", c.attributes});
    world.records->setPassword("bob", "pw");
    EXPECT_FALSE(DirServiceWrapper::init()->authenticateUser("bob", "pw"));
  }
}

TEST_F(OldSystem, RefusesTwoRecordsOfOneName) {
  world_.records->add(userRecord("ann", "502", "20", "Ann Other"));
  EXPECT_FALSE(authenticate("ann", "secret"));
}

TEST_F(OldSystem, TriesNoOtherMethodAfterARefusal) {
  EXPECT_FALSE(authenticate("ann", "wrong"));
  EXPECT_EQ(std::ranges::count(world_.services->calls(), "dsDoDirNodeAuth"), 1);
}

TEST_F(OldSystem, KeepsNothingOfAPasswordCheckWhateverFails) {
  expectNothingKeptWhateverFails([](DirectoryWorld& world) {
    world.process->setAppKitVersionNumber(949);
    world.services->leaveContinueData();
    if (const auto wrapper = DirServiceWrapper::init()) wrapper->authenticateUser("ann", "secret");
  });
}

}  // namespace
}  // namespace vt
