#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "platform/memory/MemoryMetadataIndex.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// An index with one item, "/a", and names for some of its attributes.
class ItemMetadata : public testing::Test {
 protected:
  ItemMetadata() {
    MemoryMetadataIndex& index = world_.metadataIndex();
    index.addAttribute("kMDItemFSSize", "Size");
    index.addAttribute("kMDItemAuthors", "Authors");
    index.addAttribute("kMDItemSecret", std::nullopt);
    index.addAttribute("kMDItemFSName", "Name");
    index.addAttribute("kMDItemDisplayName", "Name");
    index.addHit({{"kMDItemPath", "/a"},
                  {"kMDItemFSSize", 7},
                  {"kMDItemSecret", "x"},
                  {"kMDItemAuthors", Array::make({"Ann", "Ben"})}});
  }

  std::shared_ptr<VTSearchResult> group(const std::string& path) const {
    return VTSearchResult::initWithGroupKind(
        nullptr, VTSearchResult::Records::make({Dictionary::make({{"kMDItemPath", path}})}),
        nullptr, {}, nullptr);
  }
  static void start() { VTSettings::sharedInstance()->loadAttributeNames(); }

  LogCapture log_;
  TestWorld world_;
};

TEST_F(ItemMetadata, IsByDisplayNameInTheOrderOfTheIndex) {
  start();
  const std::shared_ptr<Dictionary> metadata = group("/a")->metadataForItemAtIndex(0);
  ASSERT_EQ(metadata->size(), 2U);
  EXPECT_EQ(metadata->entries()[0].first.str(), "Size");
  EXPECT_EQ(metadata->entries()[0].second, Value(7));
  EXPECT_EQ(metadata->entries()[1].first.str(), "Authors");
  EXPECT_EQ(metadata->entries()[1].second, Value(Array::make({"Ann", "Ben"})));
}

TEST_F(ItemMetadata, IsEmptyBeforeStartup) {
  EXPECT_TRUE(group("/a")->metadataForItemAtIndex(0)->empty());
}

TEST_F(ItemMetadata, IsEmptyForAFileThatTheIndexDoesNotKnow) {
  start();
  EXPECT_TRUE(group("/b")->metadataForItemAtIndex(0)->empty());
  EXPECT_TRUE(group("/a")->metadataForItemAtIndex(1)->empty());
}

TEST_F(ItemMetadata, KeepsOneValueOfTwoThatShareADisplayName) {
  world_.metadataIndex().addHit(
      {{"kMDItemPath", "/b"}, {"kMDItemFSName", "b.txt"}, {"kMDItemDisplayName", "b"}});
  start();
  EXPECT_EQ(*group("/b")->metadataForItemAtIndex(0), *Dictionary::make({{"Name", "b"}}));
}

TEST_F(ItemMetadata, IsTheCallersOwn) {
  start();
  const auto items = group("/a");
  items->metadataForItemAtIndex(0)->set("Size", 8);
  EXPECT_EQ(items->metadataForItemAtIndex(0)->get("Size"), Value(7));
}

TEST_F(ItemMetadata, AsksForTheNamesAndThenForTheirValues) {
  const auto items = group("/a");
  items->metadataForItemAtIndex(0);
  EXPECT_THAT(
      world_.metadataIndex().calls(),
      ElementsAre("MDItemCreate /a", "MDItemCopyAttributeNames",
                  "MDItemCopyAttributes kMDItemPath,kMDItemFSSize,kMDItemSecret,kMDItemAuthors"));
}

}  // namespace
}  // namespace vt
