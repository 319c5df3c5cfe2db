#include "scopes/VTSearchFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "scopes/VTConcreteSearchFolder.h"
#include "scopes/VTSearchFolderGroup.h"
#include "support/ChangeJournal.h"
#include "support/LogCapture.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(VTSearchFolder, AnswersEmptyValuesInTheBase) {
  const TestWorld world;
  const auto folder = VTSearchFolder::initWithTitle("Projects");
  EXPECT_EQ(folder->title(), "Projects");
  EXPECT_EQ(folder->download(), 0);
  EXPECT_FALSE(folder->isDownloadable("/Data/a.pdf"));
  EXPECT_EQ(folder->paths(), nullptr);
  EXPECT_EQ(folder->serializedData(), nullptr);
  EXPECT_EQ(folder->folders(), nullptr);
}

TEST(VTSearchFolder, IgnoresTheDictionaryInTheBase) {
  const auto folder = VTSearchFolder::initWithDictionary(*Dictionary::make({{"title", "X"}}));
  EXPECT_EQ(folder->title(), std::nullopt);
}

TEST(VTSearchFolder, IsEqualToAnyFolderWithItsTitle) {
  const auto concrete = VTConcreteSearchFolder::initWithPath("/Data", "Projects");
  const auto group = VTSearchFolderGroup::initWithTitle("Projects");
  const auto otherCase = VTSearchFolderGroup::initWithTitle("projects");
  const auto composed = VTSearchFolderGroup::initWithTitle("\xc3\xa4");
  const auto decomposed = VTSearchFolderGroup::initWithTitle("a\xcc\x88");
  const auto untitled = VTConcreteSearchFolder::initWithPath("/Data", std::nullopt);
  const auto untitledGroup = VTSearchFolderGroup::initWithTitle(std::nullopt);
  const auto noFolder = ObjectArray<VTSearchFolder>::make();
  EXPECT_TRUE(concrete->isEqual(group.get()));
  EXPECT_TRUE(group->isEqual(concrete.get()));
  EXPECT_FALSE(group->isEqual(otherCase.get()));
  EXPECT_FALSE(composed->isEqual(decomposed.get()));
  EXPECT_FALSE(untitled->isEqual(untitledGroup.get()));
  EXPECT_FALSE(untitled->isEqual(untitled.get()));
  EXPECT_FALSE(group->isEqual(noFolder.get()));
  EXPECT_FALSE(group->isEqual(nullptr));
}

TEST(VTSearchFolder, FindsItselfByItsExactTitle) {
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "Projects");
  EXPECT_EQ(folder->searchFolderForTitle("Projects"), folder);
  EXPECT_EQ(folder->searchFolderForTitle("projects"), nullptr);
  EXPECT_EQ(VTConcreteSearchFolder::initWithTitle(std::nullopt)->searchFolderForTitle(""), nullptr);
}

TEST(VTSearchFolder, AnnouncesTitleAndDownload) {
  const auto folder = VTConcreteSearchFolder::initWithTitle("A");
  ChangeJournal journal;
  journal.observe(*folder, "title");
  journal.observe(*folder, "download");
  folder->setTitle("B");
  folder->setDownload(1);
  EXPECT_THAT(journal.lines(),
              ElementsAre("will title", "did title", "will download", "did download"));
}

TEST(VTSearchFolder, ReadsItsPropertiesByKey) {
  const auto folder = VTConcreteSearchFolder::initWithPath("/Data", "A");
  EXPECT_EQ(folder->valueForKey("title"), Value("A"));
  EXPECT_EQ(folder->valueForKey("download"), Value(0));
  EXPECT_EQ(folder->valueForKey("paths"), Value(Array::make({"/Data"})));
  EXPECT_EQ(folder->valueForKey("folders"), std::nullopt);
  EXPECT_THROW(folder->valueForKey("colour"), UndefinedKeyError);
}

TEST(VTSearchFolder, StoresAListInItsOrder) {
  const TestWorld world;
  const auto folders = ObjectArray<VTSearchFolder>::make(
      {VTSearchFolderGroup::initWithTitle("B"), VTSearchFolderGroup::initWithTitle("A")});
  const auto stored = VTSearchFolder::serializedDataFromFolderArray(*folders);
  ASSERT_EQ(stored->size(), 2U);
  EXPECT_EQ(stored->at(0).dictionary()->get("title"), Value("B"));
  EXPECT_EQ(stored->at(1).dictionary()->get("title"), Value("A"));
}

TEST(VTSearchFolder, RaisesForABareFolderInAListToStore) {
  const TestWorld world;
  const auto folders = ObjectArray<VTSearchFolder>::make({VTSearchFolder::initWithTitle("bare")});
  EXPECT_THROW(VTSearchFolder::serializedDataFromFolderArray(*folders), InvalidArgumentError);
}

TEST(VTSearchFolder, ReadsNoStoredListAsAnEmptyOne) {
  const TestWorld world;
  const auto none = VTSearchFolder::deserializedFoldersFromStorage(nullptr);
  ASSERT_NE(none, nullptr);
  EXPECT_TRUE(none->empty());
  EXPECT_TRUE(VTSearchFolder::deserializedFoldersFromStorage(Array::make())->empty());
}

TEST(VTSearchFolder, ReadsADictionaryWithChildrenAsAGroup) {
  const TestWorld world;
  const Value anything[] = {Array::make(), nullptr, "text", 0};
  for (const Value& children : anything) {
    SCOPED_TRACE(describeKind(children.kind()));
    const auto data = Dictionary::make({{"title", "All"}, {"children", children}});
    const auto folder = VTSearchFolder::deserializeFolderWithData(*data);
    ASSERT_NE(std::dynamic_pointer_cast<VTSearchFolderGroup>(folder), nullptr);
    EXPECT_EQ(folder->title(), "All");
    EXPECT_TRUE(folder->paths()->empty());
  }
}

TEST(VTSearchFolder, LogsAndLeavesOutWhatCannotBeReadBack) {
  const TestWorld world;
  const auto good = Dictionary::make({{"title", "Good"}});
  const auto undefined = Dictionary::make({{"title", "Bad"}, {"colour", "red"}});
  const auto wrongType = Dictionary::make({{"title", 3}});
  const auto inGroup =
      Dictionary::make({{"title", "Group"}, {"children", Array::make({undefined})}});
  const auto notAMember = Dictionary::make({{"title", "G"}, {"children", Array::make({"text"})}});
  const auto stored =
      Array::make({undefined, "text", nullptr, wrongType, inGroup, notAMember, good});
  const LogCapture log;
  const auto folders = VTSearchFolder::deserializedFoldersFromStorage(stored);
  ASSERT_EQ(folders->size(), 1U);
  EXPECT_EQ(folders->at(0)->title(), "Good");
  EXPECT_EQ(stored->size(), 7U);
  ASSERT_EQ(log.lines().size(), 6U);
  EXPECT_THAT(log.lines()[0], HasSubstr("\"colour\""));
  EXPECT_THAT(log.lines()[1], HasSubstr("a string, not a dictionary"));
}

}  // namespace
}  // namespace vt
