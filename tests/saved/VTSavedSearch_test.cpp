#include "saved/VTSavedSearch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/Array.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "settings/VTSettings.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::shared_ptr<Dictionary> stored(const Value& query, const Value& title, const Value& folder) {
  return Dictionary::make({{"query", query}, {"title", title}, {"searchFolderTitle", folder}});
}

std::vector<std::string> queriesIn(const Dictionary& storage) {
  std::vector<std::string> queries;
  const auto searches = VTSavedSearch::savedSearchesFromStorage(storage);
  for (const auto& search : *searches) {
    queries.push_back(search->query().value_or("(nil)"));
  }
  return queries;
}

TEST(VTSavedSearch, StartsWithoutAFolder) {
  const auto search = VTSavedSearch::initWithQuery("q", "Reports");
  EXPECT_EQ(search->query(), "q");
  EXPECT_EQ(search->title(), "Reports");
  EXPECT_EQ(search->searchFolderTitle(), "");
  EXPECT_EQ(*search->storageDictionary(), *stored("q", "Reports", ""));
}

TEST(VTSavedSearch, StoresTheNullMarkerForNil) {
  const auto search = VTSavedSearch::initWithQuery(std::nullopt, std::nullopt);
  EXPECT_EQ(*search->storageDictionary(), *stored(nullptr, nullptr, ""));
  search->setSearchFolderTitle(std::nullopt);
  EXPECT_EQ(*search->storageDictionary(), *stored(nullptr, nullptr, nullptr));
}

TEST(VTSavedSearch, GivesANewDictionaryEachTime) {
  const auto search = VTSavedSearch::initWithQuery("q", "Reports");
  EXPECT_NE(search->storageDictionary(), search->storageDictionary());
}

TEST(VTSavedSearch, ReadsBackWhatWasStored) {
  const auto data = stored("q", "Reports", "Projects");
  EXPECT_EQ(*VTSavedSearch::initWithDictionary(*data)->storageDictionary(), *data);
}

TEST(VTSavedSearch, HasNoFolderTitleWhenNoneWasStored) {
  const auto search =
      VTSavedSearch::initWithDictionary(*Dictionary::make({{"query", "q"}, {"title", nullptr}}));
  EXPECT_EQ(search->searchFolderTitle(), std::nullopt);
  EXPECT_EQ(search->title(), std::nullopt);
  const TestWorld world;
  EXPECT_EQ(search->searchFolder(), nullptr);
}

TEST(VTSavedSearch, RefusesAKeyOrValueItDoesNotKnow) {
  EXPECT_THROW(VTSavedSearch::initWithDictionary(*Dictionary::make({{"searchFolder", "x"}})),
               UndefinedKeyError);
  EXPECT_THROW(VTSavedSearch::initWithDictionary(*Dictionary::make({{"query", 5}})),
               InvalidArgumentError);
}

TEST(VTSavedSearch, ReplacesTheOneWithItsTitleAtTheEnd) {
  const auto storage = Dictionary::make();
  VTSavedSearch::initWithQuery("first", "Reports")->addToStorage(*storage);
  VTSavedSearch::initWithQuery("other", "Other")->addToStorage(*storage);
  VTSavedSearch::initWithQuery("second", "Reports")->addToStorage(*storage);
  EXPECT_THAT(queriesIn(*storage), ElementsAre("other", "second"));
}

TEST(VTSavedSearch, AddsToTheVeryArrayThatIsStored) {
  const auto array = Array::make();
  const auto storage = Dictionary::make({{"SavedSearches", array}});
  VTSavedSearch::initWithQuery("q", "Reports")->addToStorage(*storage);
  EXPECT_EQ(storage->find("SavedSearches")->array(), array);
  EXPECT_EQ(*array, *Array::make({stored("q", "Reports", "")}));
}

TEST(VTSavedSearch, ChangesNothingByRemovingWhatIsNotStored) {
  const auto storage = Dictionary::make();
  VTSavedSearch::initWithQuery("q", "Reports")->removeFromStorage(*storage);
  EXPECT_TRUE(storage->empty());
  VTSavedSearch::initWithQuery("q", "Reports")->addToStorage(*storage);
  VTSavedSearch::initWithQuery("q", "reports")->removeFromStorage(*storage);
  VTSavedSearch::initWithQuery("q", std::nullopt)->removeFromStorage(*storage);
  EXPECT_THAT(queriesIn(*storage), ElementsAre("q"));
}

TEST(VTSavedSearch, RemovesTheFirstOfItsTitleAndItsEquals) {
  const auto storage = Dictionary::make(
      {{"SavedSearches", Array::make({"no dictionary", stored("1", "A", ""), stored("2", "A", ""),
                                      stored("1", "A", ""), stored("1", "A", "other folder"),
                                      stored("1", "B", "")})}});
  VTSavedSearch::initWithQuery("unlike", "A")->removeFromStorage(*storage);
  EXPECT_EQ(*storage->find("SavedSearches")->array(),
            *Array::make({"no dictionary", stored("2", "A", ""), stored("1", "A", "other folder"),
                          stored("1", "B", "")}));
}

TEST(VTSavedSearch, TakesNullMarkersForEqualWhenItRemoves) {
  const auto storage = Dictionary::make(
      {{"SavedSearches", Array::make({stored(nullptr, "A", nullptr), stored(nullptr, nullptr, ""),
                                      stored(nullptr, "A", ""), stored(nullptr, "A", nullptr)})}});
  VTSavedSearch::initWithQuery("unlike", "A")->removeFromStorage(*storage);
  EXPECT_EQ(*storage->find("SavedSearches")->array(),
            *Array::make({stored(nullptr, nullptr, ""), stored(nullptr, "A", "")}));
}

TEST(VTSavedSearch, IsAddedEachTimeWithoutATitle) {
  const auto storage = Dictionary::make();
  VTSavedSearch::initWithQuery("1", std::nullopt)->addToStorage(*storage);
  VTSavedSearch::initWithQuery("2", std::nullopt)->addToStorage(*storage);
  EXPECT_THAT(queriesIn(*storage), ElementsAre("1", "2"));
}

TEST(VTSavedSearch, TakesAValueOfAnotherTypeAsNoList) {
  const auto storage = Dictionary::make({{"SavedSearches", "text"}});
  EXPECT_TRUE(VTSavedSearch::savedSearchesFromStorage(*storage)->empty());
  VTSavedSearch::initWithQuery("q", "A")->removeFromStorage(*storage);
  EXPECT_EQ(storage->get("SavedSearches"), Value("text"));
  VTSavedSearch::initWithQuery("q", "A")->addToStorage(*storage);
  EXPECT_THAT(queriesIn(*storage), ElementsAre("q"));
}

TEST(VTSavedSearch, ListsNothingWithoutAStoredList) {
  const auto searches = VTSavedSearch::savedSearchesFromStorage(*Dictionary::make());
  ASSERT_NE(searches, nullptr);
  EXPECT_TRUE(searches->empty());
}

TEST(VTSavedSearch, LogsAndLeavesOutWhatCannotBeReadBack) {
  const auto storage = Dictionary::make(
      {{"SavedSearches", Array::make({"text", Dictionary::make({{"colour", "red"}}),
                                      stored("q", 5, ""), stored("good", "A", "")})}});
  const LogCapture log;
  EXPECT_THAT(queriesIn(*storage), ElementsAre("good"));
  EXPECT_THAT(log.lines(),
              ElementsAre(HasSubstr("a string"), HasSubstr("\"colour\""), HasSubstr("\"title\"")));
}

TEST(VTSavedSearch, IsEqualByTitleAlone) {
  const auto search = VTSavedSearch::initWithQuery("1", "A");
  const auto untitled = VTSavedSearch::initWithQuery("1", std::nullopt);
  const auto folder = VTSearchFolder::initWithTitle("A");
  EXPECT_TRUE(search->isEqual(VTSavedSearch::initWithQuery("2", "A").get()));
  EXPECT_FALSE(search->isEqual(VTSavedSearch::initWithQuery("1", "a").get()));
  EXPECT_FALSE(search->isEqual(folder.get()));
  EXPECT_FALSE(search->isEqual(nullptr));
  EXPECT_FALSE(untitled->isEqual(untitled.get()));
}

TEST(VTSavedSearch, FindsItsFolderAtAnyDepthInTheSettings) {
  const TestWorld world;
  const auto inner = VTConcreteSearchFolder::initWithPath("/inner", "Projects");
  const auto later = VTConcreteSearchFolder::initWithPath("/later", "Projects");
  const auto group = VTSearchFolderGroup::initWithTitle("All");
  group->addFolder(inner);
  VTSettings::sharedInstance()->setSearchFolders(ObjectArray<VTSearchFolder>::make({group, later}));
  const auto search = VTSavedSearch::initWithQuery("q", "Reports");
  search->setSearchFolder(later);
  EXPECT_EQ(search->searchFolderTitle(), "Projects");
  EXPECT_EQ(search->searchFolder(), inner);
}

TEST(VTSavedSearch, HasNoFolderOnceNoneAnswersForTheTitle) {
  const TestWorld world;
  const auto folder = VTConcreteSearchFolder::initWithPath("/p", "Projects");
  VTSettings::sharedInstance()->setSearchFolders(ObjectArray<VTSearchFolder>::make({folder}));
  const auto search = VTSavedSearch::initWithQuery("q", "Reports");
  EXPECT_EQ(search->searchFolder(), nullptr);
  search->setSearchFolder(folder);
  EXPECT_EQ(search->searchFolder(), folder);
  folder->setTitle("Renamed");
  EXPECT_EQ(search->searchFolder(), nullptr);
}

TEST(VTSavedSearch, RemembersNoFolderForNilOrAFolderWithoutTitle) {
  const auto search = VTSavedSearch::initWithQuery("q", "Reports");
  search->setSearchFolderTitle("Projects");
  search->setSearchFolder(VTSearchFolder::initWithTitle(std::nullopt));
  EXPECT_EQ(search->searchFolderTitle(), "");
  search->setSearchFolderTitle("Projects");
  search->setSearchFolder(nullptr);
  EXPECT_EQ(search->searchFolderTitle(), "");
}

TEST(VTSavedSearch, SetsAndReadsItsPropertiesByKey) {
  const auto search = VTSavedSearch::initWithQuery("q", "Reports");
  for (const char* key : {"query", "title", "searchFolderTitle"}) {
    SCOPED_TRACE(key);
    search->setValue("other", key);
    EXPECT_EQ(search->valueForKey(key), Value("other"));
    search->setValue(nullptr, key);
    EXPECT_EQ(search->valueForKey(key), std::nullopt);
  }
  EXPECT_THROW(search->setValue("x", "searchFolder"), UndefinedKeyError);
  EXPECT_EQ(*search->storageDictionary(), *stored(nullptr, nullptr, nullptr));
}

}  // namespace
}  // namespace vt
