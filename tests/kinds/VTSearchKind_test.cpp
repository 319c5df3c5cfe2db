#include "kinds/VTSearchKind.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;

constexpr const char* kThreeKinds = R"({
  Documents = { types = ("public.text"); searchable = YES; sortorder = 2; };
  Images = { types = ("public.image"); searchable = YES; sortorder = 1; defaultView = 1; };
  Other = { default = YES; };
})";

std::vector<std::string> titlesOf(const ObjectArray<VTSearchKind>& kinds) {
  std::vector<std::string> titles;
  for (const auto& kind : kinds) titles.push_back(kind->title());
  return titles;
}

class VTSearchKindTest : public testing::Test {
 protected:
  VTSearchKindTest() { world_.resources().add("ContentTypeGroups", "plist", kThreeKinds); }

 private:
  TestWorld world_;
};

TEST_F(VTSearchKindTest, IsTheOneThatListsTheMostSpecificType) {
  struct Case {
    const char* what;
    std::shared_ptr<Array> types;
    const char* title;
  };
  const Case cases[] = {
      {"by a parent", Array::make({"public.png", "public.image", "public.data", "public.item"}),
       "Images"},
      {"two listed types", Array::make({"public.svg", "public.text", "public.image"}), "Documents"},
      {"unlisted", Array::make({"com.example.unknown", "public.data"}), "Other"},
      {"no types", Array::make(), "Other"},
      {"nil", nullptr, "Other"},
      {"no text", Array::make({1, nullptr, "public.image"}), "Images"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(VTSearchKind::kindForContentTypes(c.types.get())->title(), c.title);
  }
}

TEST_F(VTSearchKindTest, TakesItsFieldsFromTheResource) {
  const auto images = VTSearchKind::kindWithTitle("Images");
  ASSERT_NE(images, nullptr);
  EXPECT_EQ(*images->types(), *Array::make({"public.image"}));
  EXPECT_TRUE(images->searchable());
  EXPECT_EQ(images->defaultView(), 1);
  EXPECT_EQ(images->sortorder(), 1U);
  EXPECT_EQ(VTSearchKind::defaultKind()->title(), "Other");
}

TEST_F(VTSearchKindTest, IsFoundByItsExactTitle) {
  EXPECT_NE(VTSearchKind::kindWithTitle("Images"), nullptr);
  EXPECT_EQ(VTSearchKind::kindWithTitle("images"), nullptr);
  EXPECT_EQ(VTSearchKind::kindWithTitle(""), nullptr);
}

TEST_F(VTSearchKindTest, SharesTheArrayOfAllKindsButNotThatOfSearchableOnes) {
  EXPECT_EQ(VTSearchKind::allSearchKinds(), VTSearchKind::allSearchKinds());
  EXPECT_NE(VTSearchKind::searchableKinds(), VTSearchKind::searchableKinds());
}

TEST_F(VTSearchKindTest, ShowsAChangedFieldToEveryUser) {
  VTSearchKind::kindWithTitle("Images")->setSearchable(/*searchable=*/false);
  EXPECT_THAT(titlesOf(*VTSearchKind::searchableKinds()), ElementsAre("Documents"));
}

TEST_F(VTSearchKindTest, ReadsAndWritesByKey) {
  const auto kind = VTSearchKind::kindWithTitle("Images");
  kind->setValue("4294967296", "sortorder");
  kind->setValue(0, "defaultView");
  kind->setValue(false, "searchable");
  EXPECT_EQ(kind->valueForKey("sortorder"), Value(std::uint64_t{1} << 32));
  EXPECT_EQ(kind->valueForKey("defaultView"), Value(0));
  EXPECT_EQ(kind->valueForKey("searchable"), Value(false));
  EXPECT_EQ(kind->valueForKey("title"), Value("Images"));
  EXPECT_EQ(kind->valueForKey("types"), Value(Array::make({"public.image"})));
  EXPECT_THROW(kind->setValue("x", "title"), UndefinedKeyError);
  EXPECT_THROW(kind->setValue(Array::make(), "types"), UndefinedKeyError);
  EXPECT_THROW(kind->setValue(std::nullopt, "searchable"), InvalidArgumentError);
}

TEST(VTSearchKind, IsAbsentEverywhereWithoutTheResource) {
  const TestWorld world;
  EXPECT_TRUE(VTSearchKind::allSearchKinds()->empty());
  EXPECT_TRUE(VTSearchKind::searchableKinds()->empty());
  EXPECT_EQ(VTSearchKind::kindWithTitle("Images"), nullptr);
  EXPECT_EQ(VTSearchKind::defaultKind(), nullptr);
  EXPECT_EQ(VTSearchKind::kindForContentTypes(Array::make({"public.image"}).get()), nullptr);
}

TEST(VTSearchKind, ListsSearchableKindsByTitleWithoutRegardToCase) {
  TestWorld world;
  world.resources().add("ContentTypeGroups", "plist", R"({
    cherry = { searchable = YES; };
    Banana = { searchable = YES; };
    hidden = { searchable = NO; };
    absent = { };
    apple = { searchable = YES; };
  })");
  EXPECT_THAT(titlesOf(*VTSearchKind::searchableKinds()), ElementsAre("apple", "Banana", "cherry"));
}

TEST(VTSearchKind, StartsUnsearchableAndAsAList) {
  const auto types = Array::make({"public.text"});
  const auto kind = VTSearchKind::initWithTitle("Texts", types);
  EXPECT_EQ(kind->title(), "Texts");
  EXPECT_EQ(kind->types(), types);
  EXPECT_FALSE(kind->searchable());
  EXPECT_EQ(kind->defaultView(), 0);
  EXPECT_EQ(kind->sortorder(), 0U);
}

TEST(VTSearchKind, ComparesTitlesWithoutRegardToCase) {
  struct Case {
    const char* a;
    const char* b;
    int order;
  };
  const Case cases[] = {
      {"apple", "Banana", -1},                                              //
      {"Banana", "apple", 1},                                               //
      {"Apple", "aPPLE", 0},                                                //
      {"a10", "a9", -1},                                                    // not by number
      {"a", "ab", -1},         {"", "a", -1}, {"\xc3\x84", "\xc3\xa4", 0},  // Ä, ä
      {"z", "\xc3\xa4", -1},  // by code point, as no locale has it
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.a << " and " << c.b);
    const auto a = VTSearchKind::initWithTitle(c.a, nullptr);
    EXPECT_EQ(a->titleCompare(*VTSearchKind::initWithTitle(c.b, nullptr)), c.order);
  }
}

}  // namespace
}  // namespace vt
