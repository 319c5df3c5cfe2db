#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "DirectoryWorld.h"
#include "directory/DirectoryFunctions.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

using testing::ElementsAre;

DirectoryRecord sharePoint(const std::string& name, std::vector<DirectoryAttribute> attributes) {
  attributes.insert(attributes.begin(), {kDSNAttrRecordName, {name}});
  return {kDSStdRecordTypeSharePoints, name, std::move(attributes)};
}

/// Lists the share points as their one caller does.
std::shared_ptr<Array> listSharePoints(DirectoryWorld& world) {
  std::shared_ptr<Array> records;
  if (world.services->dsOpenDirService(&gDirRef) != kDSNoErr) return nullptr;
  DirNodeReference node = 0;
  if (MyOpenDirNode(&node) == kDSNoErr) {
    records = GetRecordList(node);
    if (node != 0) world.services->dsCloseDirNode(node);
  }
  world.services->dsCloseDirService(std::exchange(gDirRef, 0));
  return records;
}

TEST(GetRecordList, MapsEachAttributeWithExactlyOneValue) {
  DirectoryWorld world;
  world.records->add(sharePoint("Data", {{"dsAttrTypeNative:directory_path", {"/srv/data"}},
                                         {"dsAttrTypeNative:two", {"a", "b"}},
                                         {"dsAttrTypeNative:none", {}}}));
  world.records->add(sharePoint("Other", {}));
  const auto records = listSharePoints(world);
  ASSERT_EQ(records->size(), 2U);
  EXPECT_EQ(*records->at(0).dictionary(),
            *Dictionary::make({{"dsAttrTypeStandard:RecordName", "Data"},
                               {"dsAttrTypeNative:directory_path", "/srv/data"}}));
  EXPECT_EQ(*records->at(1).dictionary(),
            *Dictionary::make({{"dsAttrTypeStandard:RecordName", "Other"}}));
}

TEST(GetRecordList, IsEmptyButNotNilWithoutSharePointsOrSession) {
  DirectoryWorld world;
  EXPECT_TRUE(listSharePoints(world)->empty());
  EXPECT_TRUE(GetRecordList(/*node=*/1)->empty());
}

TEST(GetRecordList, GoesOnWhileRecordsRemainAndKeepsTheirOrder) {
  DirectoryWorld world;
  for (int i = 0; i < 40; ++i) {
    world.records->add(sharePoint(std::to_string(i), {{"native", {std::string(300, 'x')}}}));
  }
  const auto records = listSharePoints(world);
  ASSERT_EQ(records->size(), 40U);
  for (int i = 0; i < 40; ++i) {
    EXPECT_EQ(records->at(i).dictionary()->get(kDSNAttrRecordName), Value(std::to_string(i)));
  }
  EXPECT_GT(std::ranges::count(world.services->calls(), "dsGetRecordList"), 5);
}

TEST(GetRecordList, PassesOverARecordThatNoBufferHolds) {
  DirectoryWorld world;
  world.records->add(sharePoint("a", {}));
  world.records->add(sharePoint("huge", {{"native", {std::string(3000, 'x')}}}));
  world.records->add(sharePoint("b", {}));
  const auto records = listSharePoints(world);
  ASSERT_EQ(records->size(), 2U);
  EXPECT_EQ(records->at(1).dictionary()->get(kDSNAttrRecordName), Value("b"));
}

TEST(GetRecordList, CountsARecordThatCannotBeReadAsAnEmptyOne) {
  DirectoryWorld world;
  world.records->add(sharePoint("a", {}));
  world.records->add(sharePoint("b", {}));
  world.services->refuse("dsGetRecordEntry", 1);
  const auto records = listSharePoints(world);
  ASSERT_EQ(records->size(), 2U);
  EXPECT_TRUE(records->at(0).dictionary()->empty());
  EXPECT_EQ(records->at(1).dictionary()->size(), 1U);
}

TEST(GetRecordList, LeavesOutAnAttributeOrValueThatCannotBeReadOrIsNoText) {
  DirectoryWorld world;
  world.records->add(sharePoint("a", {{"one", {"1"}}, {"latin", {"\xE4"}}, {"two", {"2"}}}));
  world.services->refuse("dsGetAttributeEntry", 1);
  EXPECT_EQ(*listSharePoints(world)->at(0).dictionary(),
            *Dictionary::make({{"one", "1"}, {"two", "2"}}));
  world.services->refuse("dsGetAttributeValue", 1);
  EXPECT_EQ(*listSharePoints(world)->at(0).dictionary(),
            *Dictionary::make({{"one", "1"}, {"two", "2"}}));
}

TEST(GetRecordList, ReleasesWhatItTookInOrder) {
  DirectoryWorld world;
  world.records->add(sharePoint("a", {{"two", {"1", "2"}}}));
  listSharePoints(world);
  EXPECT_THAT(
      world.services->calls(),
      ElementsAre("dsOpenDirService", "dsBuildFromPath", "dsOpenDirNode", "dsDataListDeallocate",
                  "dsDataBufferAllocate", "dsBuildListFromStrings", "dsBuildListFromStrings",
                  "dsBuildListFromStrings", "dsGetRecordList", "dsGetRecordEntry",
                  "dsGetAttributeEntry", "dsGetAttributeValue", "dsCloseAttributeValueList",
                  "dsDeallocAttributeValueEntry", "dsDeallocAttributeEntry", "dsGetAttributeEntry",
                  "dsCloseAttributeValueList", "dsDeallocAttributeEntry", "dsCloseAttributeList",
                  "dsDeallocRecordEntry", "dsDataListDeallocate", "dsDataListDeallocate",
                  "dsDataListDeallocate", "dsDataBufferDeAllocate", "dsCloseDirNode",
                  "dsCloseDirService"));
  EXPECT_THAT(world.services->bufferSizes(), ElementsAre(2048U));
}

TEST(GetRecordList, KeepsNothingWhateverFails) {
  expectNothingKeptWhateverFails([](DirectoryWorld& world) {
    world.records->add(sharePoint("a", {{"native", {std::string(1500, 'x')}}}));
    world.records->add(sharePoint("b", {{"native", {std::string(1500, 'x')}}}));
    listSharePoints(world);
  });
}

TEST(MyOpenDirNode, LogsWhyTheNodeCouldNotBeOpened) {
  DirectoryWorld world;
  world.services->dsOpenDirService(&gDirRef);
  world.services->refuse("dsOpenDirNode");
  DirNodeReference node = 7;
  EXPECT_EQ(MyOpenDirNode(&node), MemoryDirectoryServices::kRefused);
  EXPECT_EQ(node, 7U);
  EXPECT_THAT(world.log, ElementsAre("Open node failed. Err = -14999\n"));
  world.services->dsCloseDirService(std::exchange(gDirRef, 0));
}

TEST(MyOpenDirNode, SucceedsWithoutANodeWhenThePathCannotBeBuilt) {
  DirectoryWorld world;
  DirNodeReference node = 7;
  EXPECT_EQ(MyOpenDirNode(&node), 0);
  EXPECT_EQ(node, 7U);
  EXPECT_TRUE(world.log.empty());
}

}  // namespace
}  // namespace vt
