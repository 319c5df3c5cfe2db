#include "scopes/VTSearchFolderGroup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "scopes/VTConcreteSearchFolder.h"
#include "support/ChangeJournal.h"
#include "support/TestWorld.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<VTSearchFolder> folderCalled(const std::string& title) {
  return VTConcreteSearchFolder::initWithPath("/" + title, title);
}

std::shared_ptr<VTSearchFolderGroup> groupOf(
    const std::string& title, const std::vector<std::shared_ptr<VTSearchFolder>>& members) {
  auto group = VTSearchFolderGroup::initWithTitle(title);
  for (const auto& member : members) group->addFolder(member);
  return group;
}

// A group whose members have these downloads; -1 stands for a nested group that is mixed.
std::shared_ptr<VTSearchFolderGroup> groupWithDownloads(
    const std::vector<std::int64_t>& downloads) {
  auto group = VTSearchFolderGroup::initWithTitle("group");
  for (const std::int64_t download : downloads) {
    const std::string title = std::to_string(group->folders() ? group->folders()->size() : 0);
    if (download == -1) {
      auto nested = groupOf(title, {folderCalled("no"), folderCalled("yes")});
      nested->folders()->at(1)->setDownload(1);
      group->addFolder(nested);
    } else {
      group->addFolder(folderCalled(title));
      group->folders()->elements().back()->setDownload(download);
    }
  }
  return group;
}

TEST(VTSearchFolderGroup, DerivesItsDownloadFromItsMembers) {
  struct Case {
    std::vector<std::int64_t> members;
    std::int64_t download;
  };
  const Case cases[] = {
      {{1, 1}, 1},      {{0, 0}, 0},      {{1, 0}, -1},   {{0, 1}, -1}, {{-1, 1}, -1},
      {{-1, 0}, -1},    {{1, -1}, 1},     {{0, -1}, 0},   {{}, 0},      {{0, -1, 1}, -1},
      {{1, -1, 0}, -1}, {{-1, 0, 1}, -1}, {{2, 0, 1}, 2}, {{1, 2}, 1},  {{0, 2, 1}, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.members));
    EXPECT_EQ(groupWithDownloads(c.members)->download(), c.download);
  }
}

TEST(VTSearchFolderGroup, PassesDownloadOnToEveryMember) {
  const auto group = groupWithDownloads({0, -1, 1});
  group->setDownload(1);
  EXPECT_EQ(group->download(), 1);
  const auto nested = group->folders()->at(1);
  EXPECT_EQ(nested->folders()->at(0)->download(), 1);
  EXPECT_EQ(nested->folders()->at(1)->download(), 1);
}

TEST(VTSearchFolderGroup, IgnoresDownloadWithoutMembers) {
  const auto group = VTSearchFolderGroup::initWithTitle("empty");
  group->setDownload(1);
  EXPECT_EQ(group->download(), 0);
}

TEST(VTSearchFolderGroup, HasNoMemberArrayUntilTheFirstMember) {
  const auto group = VTSearchFolderGroup::initWithTitle("group");
  EXPECT_EQ(group->folders(), nullptr);
  const auto member = folderCalled("a");
  group->addFolder(member);
  const auto members = group->folders();
  group->removeFolder(member);
  EXPECT_EQ(group->folders(), members);
  EXPECT_TRUE(members->empty());
}

TEST(VTSearchFolderGroup, AddsNoSecondMemberWithATitle) {
  const auto first = folderCalled("a");
  const auto group = groupOf("group", {first});
  ChangeJournal journal;
  journal.observe(*group, "folders");
  group->addFolder(VTSearchFolderGroup::initWithTitle("a"));
  EXPECT_THAT(group->folders()->elements(), ElementsAre(first));
  EXPECT_THAT(journal.lines(), IsEmpty());
}

TEST(VTSearchFolderGroup, TakesSeveralMembersWithoutTitle) {
  const auto untitled = VTConcreteSearchFolder::initWithTitle(std::nullopt);
  const auto group = groupOf("group", {untitled, untitled});
  EXPECT_EQ(group->folders()->size(), 2U);
  group->removeFolder(untitled);
  EXPECT_EQ(group->folders()->size(), 2U);
}

TEST(VTSearchFolderGroup, AnnouncesAnAddedMember) {
  const auto group = VTSearchFolderGroup::initWithTitle("group");
  ChangeJournal journal;
  journal.observe(*group, "folders");
  group->addFolder(folderCalled("a"));
  EXPECT_THAT(journal.lines(), ElementsAre("will folders", "did folders"));
}

TEST(VTSearchFolderGroup, ChangesItsMembersBetweenTheTwoAnnouncements) {
  const auto group = groupOf("group", {folderCalled("a")});
  std::vector<std::size_t> sizes;
  const Observation observation = group->addObserver(
      "folders", [&](std::string_view, ChangePhase) { sizes.push_back(group->folders()->size()); });
  group->addFolder(folderCalled("b"));
  group->removeFolder(folderCalled("a"));
  EXPECT_THAT(sizes, ElementsAre(1U, 2U, 2U, 1U));
}

TEST(VTSearchFolderGroup, RemovesTheMemberWithTheTitleOfAnotherObject) {
  const auto kept = folderCalled("b");
  const auto group = groupOf("group", {folderCalled("a"), kept});
  group->removeFolder(VTSearchFolderGroup::initWithTitle("a"));
  EXPECT_THAT(group->folders()->elements(), ElementsAre(kept));
}

TEST(VTSearchFolderGroup, RemovesAnElementOfItsOwnArray) {
  const auto group = groupOf("group", {folderCalled("a")});
  group->folders()->append(folderCalled("a"));
  group->removeFolder(group->folders()->at(0));
  EXPECT_TRUE(group->folders()->empty());
}

TEST(VTSearchFolderGroup, AnnouncesARemovalEvenOfNothing) {
  const auto group = VTSearchFolderGroup::initWithTitle("group");
  ChangeJournal journal;
  journal.observe(*group, "folders");
  group->removeFolder(folderCalled("a"));
  group->removeFolder(nullptr);
  EXPECT_THAT(journal.lines(),
              ElementsAre("will folders", "did folders", "will folders", "did folders"));
  EXPECT_EQ(group->folders(), nullptr);
}

TEST(VTSearchFolderGroup, RefusesNilAsAMember) {
  const auto group = VTSearchFolderGroup::initWithTitle("group");
  EXPECT_THROW(group->addFolder(nullptr), InvalidArgumentError);
}

TEST(VTSearchFolderGroup, CoversItsMembersPathsDepthFirst) {
  const auto group = groupOf("group", {folderCalled("a"), groupOf("b", {folderCalled("c")}),
                                       VTConcreteSearchFolder::initWithPath("/a", "again"),
                                       VTSearchFolder::initWithTitle("bare")});
  EXPECT_EQ(*group->paths(), *Array::make({"/a", "/c", "/a"}));
  EXPECT_TRUE(VTSearchFolderGroup::initWithTitle("empty")->paths()->empty());
}

TEST(VTSearchFolderGroup, IsDownloadableWhereAnyMemberIs) {
  const auto group = groupOf("group", {folderCalled("a"), groupOf("b", {folderCalled("c")})});
  EXPECT_FALSE(group->isDownloadable("/c/file"));
  group->setDownload(1);
  EXPECT_TRUE(group->isDownloadable("/c/file"));
  EXPECT_FALSE(group->isDownloadable("/d/file"));
  EXPECT_FALSE(VTSearchFolderGroup::initWithTitle("empty")->isDownloadable("/c/file"));
}

TEST(VTSearchFolderGroup, FindsItselfThenItsMembersDepthFirst) {
  const auto b = folderCalled("B");
  const auto innerB = folderCalled("B");
  const auto innerD = folderCalled("D");
  const auto c = groupOf("C", {innerB, innerD});
  const auto a = groupOf("A", {b, c, folderCalled("D")});
  EXPECT_EQ(a->searchFolderForTitle("A"), a);
  EXPECT_EQ(a->searchFolderForTitle("B"), b);
  EXPECT_EQ(a->searchFolderForTitle("C"), c);
  EXPECT_EQ(a->searchFolderForTitle("D"), innerD);
  EXPECT_EQ(a->searchFolderForTitle("E"), nullptr);
}

TEST(VTSearchFolderGroup, StoresTitleAndChildrenRecursively) {
  const TestWorld world;
  const auto leaf = folderCalled("leaf");
  const auto group = groupOf("outer", {groupOf("inner", {leaf})});
  const auto inner =
      Dictionary::make({{"title", "inner"}, {"children", Array::make({leaf->serializedData()})}});
  EXPECT_EQ(*group->serializedData(),
            *Dictionary::make({{"title", "outer"}, {"children", Array::make({inner})}}));
  EXPECT_EQ(*VTSearchFolderGroup::initWithTitle("empty")->serializedData(),
            *Dictionary::make({{"title", "empty"}, {"children", Array::make()}}));
}

TEST(VTSearchFolderGroup, StoresNothingWithoutATitle) {
  const TestWorld world;
  const auto group = VTSearchFolderGroup::initWithTitle(std::nullopt);
  group->addFolder(folderCalled("a"));
  const auto data = group->serializedData();
  EXPECT_TRUE(data->empty());
  const auto readBack = VTSearchFolder::deserializeFolderWithData(*data);
  const auto concrete = std::dynamic_pointer_cast<VTConcreteSearchFolder>(readBack);
  ASSERT_NE(concrete, nullptr);
  EXPECT_EQ(concrete->title(), std::nullopt);
  EXPECT_EQ(concrete->path(), std::nullopt);
}

TEST(VTSearchFolderGroup, ReadsBackWithoutRepeatedTitles) {
  const auto data = Dictionary::make(
      {{"title", "group"},
       {"download", 1},
       {"colour", "red"},
       {"children",
        Array::make({Dictionary::make({{"title", "a"}, {"path", "/1"}}),
                     Dictionary::make({{"title", "a"}, {"path", "/2"}}),
                     Dictionary::make({{"title", "b"}, {"children", Array::make()}})})}});
  const auto group = VTSearchFolderGroup::initWithDictionary(*data);
  ASSERT_EQ(group->folders()->size(), 2U);
  EXPECT_EQ(*group->paths(), *Array::make({"/1"}));
  EXPECT_EQ(group->folders()->at(1)->title(), "b");
}

TEST(VTSearchFolderGroup, RaisesForAMemberThatCannotBeReadBack) {
  const auto bad = Dictionary::make({{"colour", "red"}});
  const auto data = Dictionary::make({{"title", "g"}, {"children", Array::make({bad})}});
  EXPECT_THROW(VTSearchFolderGroup::initWithDictionary(*data), UndefinedKeyError);
}

TEST(VTSearchFolderGroup, ReadsItsPropertiesByKeyAndTakesTitleAndDownload) {
  const auto group = groupOf("group", {folderCalled("a")});
  group->setValue("renamed", "title");
  group->setValue(1, "download");
  EXPECT_EQ(group->valueForKey("title"), Value("renamed"));
  EXPECT_EQ(group->valueForKey("download"), Value(1));
  EXPECT_EQ(group->folders()->at(0)->download(), 1);
  EXPECT_EQ(group->valueForKey("folders"), Value(group->folders()));
  EXPECT_EQ(group->valueForKey("paths"), Value(Array::make({"/a"})));
  for (const char* key : {"folders", "paths", "path", "children"}) {
    SCOPED_TRACE(key);
    EXPECT_THROW(group->setValue(nullptr, key), UndefinedKeyError);
  }
}

TEST(VTSearchFolderGroup, AnnouncesDownloadLikeAnyFolder) {
  const auto group = groupOf("group", {folderCalled("a")});
  ChangeJournal journal;
  journal.observe(*group, "download");
  group->setDownload(1);
  EXPECT_THAT(journal.lines(), ElementsAre("will download", "did download"));
}

}  // namespace
}  // namespace vt
