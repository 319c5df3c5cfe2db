#include "search/VTSearchResultContainer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "foundation/Array.h"
#include "kinds/VTSearchKind.h"
#include "scopes/VTSearchFolder.h"
#include "search/VTSearchResult.h"

namespace vt {
namespace {

using testing::ElementsAre;

std::shared_ptr<VTSearchResult> aGroup(std::string title, std::shared_ptr<Array> types = nullptr) {
  return VTSearchResult::initWithGroupKind(
      VTSearchKind::initWithTitle(std::move(title), std::move(types)),
      VTSearchResult::Records::make(), nullptr, {}, nullptr);
}

std::shared_ptr<VTSearchResultContainer> aContainer(
    std::initializer_list<std::shared_ptr<VTSearchResult>> groups) {
  return VTSearchResultContainer::initWithUser(nullptr,
                                               VTSearchResultContainer::Groups::make(groups));
}

TEST(VTSearchResultContainer, CountsItsGroups) {
  EXPECT_EQ(aContainer({})->count(), 0U);
  EXPECT_EQ(aContainer({aGroup("A"), aGroup("B")})->count(), 2U);
}

TEST(VTSearchResultContainer, HasNoGroupsWithoutAList) {
  const auto container = VTSearchResultContainer::initWithUser(nullptr, nullptr);
  EXPECT_EQ(container->results(), nullptr);
  EXPECT_EQ(container->count(), 0U);
  EXPECT_EQ(container->resultAtIndex(0), nullptr);
  EXPECT_EQ(container->resultAtIndex(1), nullptr);
  EXPECT_EQ(container->resultWithGroupName("A"), nullptr);
  container->removeResultsWithContentType("public.text");
  EXPECT_EQ(container->results(), nullptr);
}

TEST(VTSearchResultContainer, RaisesOutOfRangeAtTheCountItselfAndIsNilBeyond) {
  const std::shared_ptr<VTSearchResult> group = aGroup("A");
  const auto container = aContainer({group});
  EXPECT_EQ(container->resultAtIndex(0), group);
  EXPECT_THROW((void)container->resultAtIndex(1), std::out_of_range);
  EXPECT_EQ(container->resultAtIndex(2), nullptr);
  EXPECT_THROW((void)aContainer({})->resultAtIndex(0), std::out_of_range);
}

TEST(VTSearchResultContainer, FindsTheFirstGroupOfAnExactName) {
  const std::shared_ptr<VTSearchResult> first = aGroup("Images");
  const auto container = aContainer({aGroup("Documents"), first, aGroup("Images")});
  EXPECT_EQ(container->resultWithGroupName("Images"), first);
  EXPECT_EQ(container->resultWithGroupName("images"), nullptr);
  EXPECT_EQ(container->resultWithGroupName("Image"), nullptr);
  EXPECT_EQ(container->resultWithGroupName(""), nullptr);
}

TEST(VTSearchResultContainer, RemovesTheFirstGroupOfExactlyThatOneType) {
  const std::shared_ptr<VTSearchResult> none = aGroup("None");
  const std::shared_ptr<VTSearchResult> both =
      aGroup("Both", Array::make({"public.text", "public.rtf"}));
  const std::shared_ptr<VTSearchResult> text = aGroup("Text", Array::make({"public.text"}));
  const std::shared_ptr<VTSearchResult> again = aGroup("Again", Array::make({"public.text"}));
  const auto container = aContainer({none, both, text, again});
  container->removeResultsWithContentType("public.text");
  EXPECT_THAT(container->results()->elements(), ElementsAre(none, both, again));
  container->removeResultsWithContentType("public.text");
  EXPECT_THAT(container->results()->elements(), ElementsAre(none, both));
}

TEST(VTSearchResultContainer, KeepsItsListWhenNothingIsToBeRemoved) {
  const auto container =
      aContainer({aGroup("Both", Array::make({"public.text", "public.rtf"})), aGroup("None")});
  const auto list = container->results();
  container->removeResultsWithContentType("public.rtf");
  EXPECT_EQ(container->results(), list);
  EXPECT_EQ(container->count(), 2U);
}

TEST(VTSearchResultContainer, ReplacesTheListRatherThanEditingIt) {
  const auto container = aContainer({aGroup("Text", Array::make({"public.text"}))});
  const auto before = container->results();
  container->removeResultsWithContentType("public.text");
  EXPECT_EQ(before->size(), 1U);
  EXPECT_EQ(container->count(), 0U);
}

TEST(VTSearchResultContainer, ReadsItsPropertiesByKeyAndTakesNone) {
  const auto container = aContainer({aGroup("A")});
  EXPECT_EQ(container->valueForKey("results")->object(), container->results());
  EXPECT_EQ(container->valueForKey("count"), Value(1));
  EXPECT_THROW(container->setValue(1, "count"), UndefinedKeyError);
  EXPECT_THROW((void)container->valueForKey("user"), UndefinedKeyError);
}

}  // namespace
}  // namespace vt
