#include "settings/AttributeNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/VTSettings.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kMetadata =
    "/System/Library/Frameworks/CoreServices.framework/Frameworks/Metadata.framework";

class AttributeNamesTest : public testing::Test {
 protected:
  /// An attribute with a display name and short names; nothing for one without.
  void add(const std::string& attribute, std::optional<std::string> displayName,
           const std::optional<std::string>& shortNames = std::nullopt) {
    world_.metadataIndex().addAttribute(attribute, std::move(displayName));
    if (shortNames) {
      world_.bundles().addString(kMetadata, "schema", attribute + ".ShortName", *shortNames);
    }
  }
  void load() { VTSettings::sharedInstance()->loadAttributeNames(); }

  /// The attributes that go by a short name, and "nil" alone for nil.
  static std::vector<std::string> found(const std::string& shortName) {
    const std::shared_ptr<Array> attributes =
        VTSettings::sharedInstance()->attributesForShortName(shortName);
    if (!attributes) return {"nil"};
    std::vector<std::string> names;
    for (const Value& name : *attributes) names.push_back(*name.get<std::string>());
    return names;
  }
  static std::optional<std::string> displayName(const std::string& attribute) {
    return VTSettings::sharedInstance()->displayNameForAttributeKey(attribute);
  }

  LogCapture log_;
  TestWorld world_;
};

TEST_F(AttributeNamesTest, AreNilBeforeStartup) {
  add("kMDItemKind", "Kind", "kind");
  EXPECT_EQ(displayName("kMDItemKind"), std::nullopt);
  EXPECT_THAT(found("kind"), ElementsAre("nil"));
}

TEST_F(AttributeNamesTest, AreDisplayNamesOfTheIndex) {
  add("kMDItemKind", "Kind");
  add("kMDItemPath", std::nullopt);
  load();
  EXPECT_EQ(displayName("kMDItemKind"), "Kind");
  EXPECT_EQ(displayName("kMDItemPath"), std::nullopt);
  EXPECT_EQ(displayName("kmditemkind"), std::nullopt);
}

TEST_F(AttributeNamesTest, ReachAnAttributeUnderEachOfItsShortNamesInAnyCase) {
  add("kMDItemKind", "Kind", "kind,type");
  load();
  for (const char* shortName : {"kind", "type", "KIND", "Type"}) {
    EXPECT_THAT(found(shortName), ElementsAre("kMDItemKind")) << shortName;
  }
  EXPECT_THAT(found("kinds"), ElementsAre("nil"));
}

TEST_F(AttributeNamesTest, CollectAllAttributesOfAShortNameInTheIndexsOrder) {
  add("c", "C", "date");
  add("a", "A", "when,date");
  add("b", "B", "date");
  load();
  EXPECT_THAT(found("date"), ElementsAre("c", "a", "b"));
}

TEST_F(AttributeNamesTest, FallBackOnTheDisplayNameInLowerCase) {
  add("a", "Größe in KB");
  add("b", "Empty", "");
  add("c", "Itself", "c.ShortName");
  load();
  EXPECT_THAT(found("größe in kb"), ElementsAre("a"));
  EXPECT_THAT(found("empty"), ElementsAre("b"));
  EXPECT_THAT(found("itself"), ElementsAre("c"));
  EXPECT_THAT(found("c.shortname"), ElementsAre("nil"));
}

TEST_F(AttributeNamesTest, FallBackOnTagBesidesForTheUsersTags) {
  add("kMDItemOMUserTags", "Tags");
  add("kMDItemOtherTags", "Tags");
  load();
  EXPECT_THAT(found("tag"), ElementsAre("kMDItemOMUserTags"));
  EXPECT_THAT(found("tags"), ElementsAre("kMDItemOMUserTags", "kMDItemOtherTags"));
}

TEST_F(AttributeNamesTest, GiveNoTagToTheUsersTagsThatHaveAnEntryOfTheirOwn) {
  add("kMDItemOMUserTags", "Tags", "label");
  load();
  EXPECT_THAT(found("tag"), ElementsAre("nil"));
  EXPECT_THAT(found("label"), ElementsAre("kMDItemOMUserTags"));
}

TEST_F(AttributeNamesTest, AreNoShortNamesWithoutEntryAndDisplayName) {
  add("kMDItemOMUserTags", std::nullopt);
  add("b", std::nullopt, "bee");
  load();
  EXPECT_EQ(VTSettings::sharedInstance()->attributeNames().attributesByShortName().size(), 1U);
  EXPECT_THAT(found("bee"), ElementsAre("b"));
}

TEST_F(AttributeNamesTest, AreReplacedByAnAttributeWhoseShortNameHasCapitals) {
  add("a", "A", "kind");
  add("b", "B", "Kind");
  load();
  EXPECT_THAT(found("kind"), ElementsAre("b"));
  add("c", "C", "kind");
  load();
  EXPECT_THAT(found("kind"), ElementsAre("b", "c"));
  add("d", "D", "KIND");
  add("e", "E", "Kind");
  load();
  EXPECT_THAT(found("kind"), ElementsAre("e"));
}

TEST_F(AttributeNamesTest, AreSplitAtEveryCommaAndNotTrimmed) {
  add("a", "A", "one, two,,three,");
  load();
  EXPECT_THAT(found("one"), ElementsAre("a"));
  EXPECT_THAT(found("two"), ElementsAre("nil"));
  EXPECT_THAT(found(" two"), ElementsAre("a"));
  EXPECT_THAT(found(""), ElementsAre("a", "a"));
}

TEST_F(AttributeNamesTest, AreMadeAnewByEachLoad) {
  add("a", "A", "ay");
  load();
  add("b", "B", "ay");
  load();
  EXPECT_THAT(found("ay"), ElementsAre("a", "b"));
  EXPECT_EQ(displayName("b"), "B");
  EXPECT_THAT(log_.lines(),
              ElementsAre("Got 1 spotlight attributes", "Got 2 spotlight attributes"));
}

TEST_F(AttributeNamesTest, AreReadAsTheStartupUserByAProcessOfRoot) {
  add("a", "A");
  std::vector<std::string> events;
  world_.identity().whenSwitching([&](const std::string& call) {
    events.push_back(call + " after " + std::to_string(world_.metadataIndex().calls().size()));
  });
  VTSettings::sharedInstance()->setStartupUserId(501);
  load();
  EXPECT_THAT(events, ElementsAre("seteuid 501 after 0", "seteuid 0 after 2"));
  EXPECT_EQ(world_.identity().geteuid(), 0U);
}

TEST_F(AttributeNamesTest, AreReadWithoutASwitchByAnybodyElseAndWithoutAStartupUser) {
  load();
  VTSettings::sharedInstance()->setStartupUserId(501);
  world_.identity().setIds(1000, 1000);
  load();
  EXPECT_THAT(world_.identity().calls(), IsEmpty());
}

TEST_F(AttributeNamesTest, AreReadAllTheSameWhenTheSwitchIsRefused) {
  add("a", "A");
  world_.identity().refuseUser(501);
  VTSettings::sharedInstance()->setStartupUserId("501");
  load();
  EXPECT_EQ(displayName("a"), "A");
  EXPECT_THAT(world_.identity().calls(), ElementsAre("seteuid 501", "seteuid 0"));
  EXPECT_TRUE(world_.identity().actsAsWanted());
}

}  // namespace
}  // namespace vt
