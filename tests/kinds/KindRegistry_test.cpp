#include "kinds/KindRegistry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "foundation/Array.h"
#include "kinds/VTSearchKind.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

Value entry(std::initializer_list<std::pair<std::string_view, Value>> elements) {
  return Dictionary::make(elements);
}

TEST(KindRegistry, KeepsTheOrderOfTheTable) {
  const KindRegistry registry(*Dictionary::make({{"B", entry({})}, {"A", entry({})}}));
  ASSERT_EQ(registry.allKinds()->size(), 2U);
  EXPECT_EQ(registry.allKinds()->at(0)->title(), "B");
  EXPECT_EQ(registry.allKinds()->at(1)->title(), "A");
}

TEST(KindRegistry, GivesMissingElementsTheirDefaults) {
  const KindRegistry registry(*Dictionary::make({{"A", entry({})}, {"B", "no dictionary"}}));
  for (const auto& kind : *registry.allKinds()) {
    SCOPED_TRACE(kind->title());
    EXPECT_EQ(kind->types(), nullptr);
    EXPECT_FALSE(kind->searchable());
    EXPECT_EQ(kind->defaultView(), 0);
    EXPECT_EQ(kind->sortorder(), 0U);
  }
  EXPECT_EQ(registry.defaultKind(), nullptr);
}

TEST(KindRegistry, ReadsNumbersAndBooleansByTheirValue) {
  const KindRegistry registry(
      *Dictionary::make({{"A", entry({{"searchable", 2},
                                      {"default", "YES"},
                                      {"defaultView", std::int64_t{1} << 32 | 7},
                                      {"sortorder", -1}})}}));
  const auto kind = registry.allKinds()->at(0);
  EXPECT_TRUE(kind->searchable());
  EXPECT_EQ(registry.defaultKind(), kind);
  EXPECT_EQ(kind->defaultView(), 7);
  EXPECT_EQ(kind->sortorder(), std::numeric_limits<std::uint32_t>::max());
}

TEST(KindRegistry, GivesATypeListedTwiceToTheLaterKind) {
  const KindRegistry registry(*Dictionary::make({{"A", entry({{"types", Array::make({"x.y"})}})},
                                                 {"B", entry({{"types", Array::make({"x.y"})}})}}));
  EXPECT_EQ(registry.kindForType("x.y")->title(), "B");
}

TEST(KindRegistry, TakesTheLastOfSeveralDefaults) {
  const KindRegistry registry(*Dictionary::make({{"A", entry({{"default", true}})},
                                                 {"B", entry({{"default", true}})},
                                                 {"C", entry({{"default", false}})}}));
  EXPECT_EQ(registry.defaultKind()->title(), "B");
}

TEST(KindRegistry, SkipsTypesThatAreNoText) {
  const KindRegistry registry(*Dictionary::make(
      {{"A", entry({{"types", Array::make({1, nullptr, "x.y"})}})}, {"B", entry({{"types", 5}})}}));
  EXPECT_EQ(registry.kindForType("x.y")->title(), "A");
  EXPECT_EQ(registry.kindForType("X.Y"), nullptr);
  EXPECT_EQ(registry.allKinds()->at(1)->types(), nullptr);
}

TEST(KindRegistry, IsReadOnceFromTheResource) {
  TestWorld world;
  world.resources().add("ContentTypeGroups", "plist", "{ A = { searchable = YES; }; }");
  const auto registry = KindRegistry::shared();
  world.resources().add("ContentTypeGroups", "plist", "{}");
  EXPECT_EQ(KindRegistry::shared(), registry);
  EXPECT_EQ(registry->allKinds()->size(), 1U);
  world.restart();
  EXPECT_TRUE(KindRegistry::shared()->allKinds()->empty());
}

TEST(KindRegistry, IsEmptyWhereTheResourceIsNoDictionary) {
  for (const char* bytes : {"", "( A, B )", "<plist><dict>", "text"}) {
    SCOPED_TRACE(bytes);
    TestWorld world;
    world.resources().add("ContentTypeGroups", "plist", bytes);
    EXPECT_TRUE(KindRegistry::shared()->allKinds()->empty());
  }
}

}  // namespace
}  // namespace vt
