#include "scopes/VTSharePoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "directory/DirectoryFunctions.h"
#include "settings/VTSettings.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::SizeIs;

TEST(VTSharePoint, ListsTheRecordsInTheOrderOfTheDirectory) {
  TestWorld world;
  world.share("/b", "B", nullptr);
  world.share("/a", nullptr, "A");
  const auto all = VTSharePoint::allSharePoints();
  ASSERT_THAT(all->elements(), SizeIs(2));
  EXPECT_EQ(*all->at(0), *Dictionary::make({{"dsAttrTypeStandard:RecordName", "share of /b"},
                                            {"dsAttrTypeNative:directory_path", "/b"},
                                            {"dsAttrTypeNative:afp_name", "B"},
                                            {"dsAttrTypeNative:afp_shared", "1"}}));
  EXPECT_EQ(all->at(1)->get("dsAttrTypeNative:smb_name"), Value("A"));
}

TEST(VTSharePoint, ListsNothingWhereNothingIsShared) {
  const TestWorld world;
  EXPECT_TRUE(VTSharePoint::allSharePoints()->empty());
}

TEST(VTSharePoint, GivesEverythingBackWhicheverCallIsRefused) {
  struct Case {
    const char* refused;
    bool isNil;
  };
  const Case cases[] = {
      {"dsOpenDirService", true},        {"dsBuildFromPath", false},
      {"dsOpenDirNode", true},           {"dsDataBufferAllocate", false},
      {"dsBuildListFromStrings", false}, {"dsGetRecordList", false},
      {"dsGetRecordEntry", false},       {"dsGetAttributeEntry", false},
      {"dsGetAttributeValue", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.refused);
    TestWorld world;
    world.share("/a", "A", "A");
    const LogCapture log;
    world.directory().refuse(c.refused);
    EXPECT_EQ(VTSharePoint::allSharePoints() == nullptr, c.isNil);
    EXPECT_EQ(gDirRef, 0U);
    EXPECT_EQ(world.directory().leaks(), "");
  }
}

TEST(VTSharePoint, ClosesTheNodeBeforeTheSession) {
  TestWorld world;
  VTSharePoint::allSharePoints();
  const std::vector<std::string>& calls = world.directory().calls();
  ASSERT_GE(calls.size(), 2U);
  EXPECT_EQ(calls[calls.size() - 2], "dsCloseDirNode");
  EXPECT_EQ(calls.back(), "dsCloseDirService");
}

TEST(VTSharePoint, IsReadByEachLoadOfTheSettings) {
  TestWorld world;
  world.share("/a", "A", "A");
  const auto settings = VTSettings::sharedInstance();
  EXPECT_EQ(settings->sharepoints()->size(), 1U);
  world.share("/b", "B", "B");
  EXPECT_EQ(settings->sharepoints()->size(), 1U);
  settings->reloadConfig();
  EXPECT_EQ(settings->sharepoints()->size(), 2U);
}

TEST(VTSharePoint, LeavesTheSettingsWithoutAListWhenTheDirectoryIsRefused) {
  TestWorld world;
  world.directory().refuse("dsOpenDirService");
  EXPECT_EQ(VTSettings::sharedInstance()->sharepoints(), nullptr);
  EXPECT_EQ(VTSettings::sharedInstance()->valueForKey("sharepoints"), std::nullopt);
}

}  // namespace
}  // namespace vt
