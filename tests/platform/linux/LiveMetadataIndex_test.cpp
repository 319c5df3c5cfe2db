#include "platform/linux/LiveMetadataIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/Array.h"
#include "metadata/live/LiveTree.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/Attributes.h"
#include "platform/linux/ScriptedIdentity.h"

namespace vt {
namespace {

constexpr std::uint32_t kStranger = 54321;

const std::vector<std::string>& recordAttributes() {
  static const std::vector<std::string> kList = {"kMDItemDisplayName", "kMDItemContentTypeTree",
                                                 "kMDItemContentModificationDate",
                                                 "kMDItemLastUsedDate", "kMDItemFSSize"};
  return kList;
}

/// Newest first, absent values last, counting how often it is asked.
int newestFirst(const Value* const a[], const Value* const b[], const void* context) {
  ++**static_cast<int* const*>(context);
  if (a[0] == nullptr) return 1;
  if (b[0] == nullptr) return -1;
  return compareNaturally(*b[0], *a[0]);
}

int smallestFirst(const Value* const a[], const Value* const b[], const void* /*context*/) {
  if (a[0] == nullptr) return 1;
  if (b[0] == nullptr) return -1;
  return compareNaturally(*a[0], *b[0]);
}

/// Switches the calling thread for real, groups left as they are.
class ThreadIdentity final : public Identity {
 public:
  std::uint32_t geteuid() const override { return ::geteuid(); }
  std::uint32_t getegid() const override { return ::getegid(); }
  int seteuid(std::uint64_t uid) override {
    return static_cast<int>(syscall(SYS_setresuid, -1, static_cast<uid_t>(uid), -1));
  }
  int setegid(std::uint64_t /*gid*/) override { return -1; }
  bool actsAsWanted() const override { return true; }
  int getgrouplist(const std::string& /*name*/, std::int32_t /*baseGroup*/,
                   std::int32_t* /*groups*/, int* /*count*/) const override {
    return -1;
  }
};

class LiveMetadataIndexTest : public testing::Test {
 protected:
  std::shared_ptr<MDQuery> executed(const std::string& text,
                                    const std::vector<std::string>& values = recordAttributes(),
                                    const std::vector<std::string>& sorting = {},
                                    MDQuerySortComparatorFunction comparator = nullptr,
                                    const void* context = nullptr,
                                    const std::optional<MDQueryDeclaredOrder>& order = {}) {
    auto query = index_.MDQueryCreate(text, values, sorting);
    if (!query) throw std::runtime_error("query rejected: " + text);
    if (comparator != nullptr) index_.MDQuerySetSortComparator(*query, comparator, context, order);
    index_.MDQuerySetSearchScope(*query, {tree_.path()}, 0);
    EXPECT_TRUE(index_.MDQueryExecute(*query, kMDQuerySynchronous));
    index_.MDQueryDisableUpdates(*query);
    return query;
  }
  /// Names of the hits in their order.
  std::vector<std::string> names(MDQuery& query) {
    std::vector<std::string> result;
    for (std::int32_t i = 0; i < index_.MDQueryGetResultCount(query); ++i) {
      const auto item = index_.MDQueryGetResultAtIndex(query, i);
      result.push_back(*index_.MDItemCopyAttribute(*item, "kMDItemFSName")->get<std::string>());
    }
    return result;
  }
  void make(const char* name, std::time_t modified, std::size_t size) {
    const std::string path = tree_.file(name, std::string(size, 'x'));
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }

  LiveTree tree_;
  std::shared_ptr<ScriptedIdentity> identity_ = std::make_shared<ScriptedIdentity>();
  LiveMetadataIndex index_{std::make_shared<ContentTypes>(shippedTypes()),
                           std::make_shared<query::AttributeSchema>(shippedSchema()), identity_,
                           [](std::uint32_t uid) -> std::optional<Credentials> {
                             if (uid != kStranger) return std::nullopt;
                             return Credentials(uid, uid, {});
                           }};
};

TEST_F(LiveMetadataIndexTest, RejectsAQueryAndSaysWhere) {
  MDQueryRejection rejection;
  EXPECT_EQ(index_.MDQueryCreate("kMDItemFSName ==", {}, {}, &rejection), nullptr);
  EXPECT_EQ(rejection.offset, 16U);
  EXPECT_FALSE(rejection.expected.empty());
  EXPECT_EQ(index_.MDQueryCreate("kMDItemFSName ==", {}, {}), nullptr);
}

TEST_F(LiveMetadataIndexTest, AnswersWithTheRightsOfTheEffectiveUser) {
  tree_.file("public");
  ASSERT_EQ(chmod(tree_.file("private").c_str(), 0600), 0);
  EXPECT_EQ(index_.MDQueryGetResultCount(*executed("true")), 2);
  identity_->uid = kStranger;
  EXPECT_THAT(names(*executed("true")), testing::ElementsAre("public"));
  EXPECT_EQ(identity_->uid, kStranger) << "must act as the user again";
}

TEST(LiveMetadataIndex, FindsWhatTheAccountsGroupsMayReadAndTheProcesssMayNot) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become other users";
  constexpr std::uint32_t kTheirGroup = 60000;
  const LiveTree tree;
  const struct {
    const char* name;
    gid_t group;
  } files[] = {{"their group's", kTheirGroup}, {"the process's", 0}};
  for (const auto& file : files) {
    ASSERT_EQ(chown(tree.file(file.name).c_str(), 0, file.group), 0);
    ASSERT_EQ(chmod((tree / file.name).c_str(), 0640), 0);
  }
  const auto identity = std::make_shared<ThreadIdentity>();
  LiveMetadataIndex index(std::make_shared<ContentTypes>(shippedTypes()),
                          std::make_shared<query::AttributeSchema>(shippedSchema()), identity,
                          [](std::uint32_t uid) { return Credentials(uid, uid, {kTheirGroup}); });
  const auto query = index.MDQueryCreate("true", {"kMDItemDisplayName"}, {});
  index.MDQuerySetSearchScope(*query, {tree.path()}, 0);

  ASSERT_EQ(identity->seteuid(kStranger), 0);
  const bool isExecuted = index.MDQueryExecute(*query, kMDQuerySynchronous);
  const auto name = index.MDQueryGetAttributeValueOfResultAtIndex(*query, kMDItemDisplayName, 0);
  const bool isItem = index.MDItemCreate(tree / "their group's") != nullptr;
  const bool isOthersItem = index.MDItemCreate(tree / "the process's") != nullptr;
  const std::uint32_t uidAfter = identity->geteuid();
  ASSERT_EQ(identity->seteuid(0), 0);

  EXPECT_TRUE(isExecuted);
  EXPECT_EQ(index.MDQueryGetResultCount(*query), 1);
  EXPECT_EQ(name, Value("their group's"));
  EXPECT_TRUE(isItem);
  EXPECT_FALSE(isOthersItem);
  EXPECT_EQ(uidAfter, kStranger);
}

TEST_F(LiveMetadataIndexTest, FindsNothingForAnAccountThatItDoesNotKnow) {
  tree_.file("public");
  identity_->uid = kStranger + 1;
  EXPECT_EQ(index_.MDQueryGetResultCount(*executed("true")), 0);
  EXPECT_EQ(index_.MDItemCreate(tree_ / "public"), nullptr);
}

TEST_F(LiveMetadataIndexTest, FindsNothingWhileTheIdentityIsNotTheWantedOne) {
  tree_.file("public");
  identity_->isAsWanted = false;
  EXPECT_EQ(index_.MDQueryGetResultCount(*executed("true")), 0);
  EXPECT_EQ(index_.MDItemCreate(tree_ / "public"), nullptr);
}

TEST_F(LiveMetadataIndexTest, HasNoHitsBeforeItIsExecutedAndLooksAgainAfter) {
  tree_.file("one");
  const auto query = executed("true");
  EXPECT_EQ(index_.MDQueryGetResultCount(*index_.MDQueryCreate("true", {}, {})), 0);
  tree_.file("two");
  EXPECT_EQ(index_.MDQueryGetResultCount(*query), 1);
  EXPECT_TRUE(index_.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_EQ(index_.MDQueryGetResultCount(*query), 2);
}

TEST_F(LiveMetadataIndexTest, ChecksADeclaredOrderRatherThanSort) {
  for (int i = 0; i < 100; ++i) make(("f" + std::to_string(i)).c_str(), 1'000'000'000 + i % 7, 1);
  int asked = 0;
  int* const counter = &asked;
  const auto query = executed("true", {}, {"kMDItemContentModificationDate"}, newestFirst, &counter,
                              MDQueryDeclaredOrder{"kMDItemContentModificationDate", true});
  EXPECT_EQ(asked, 99);
  EXPECT_EQ(names(*query).front(), "f13") << "newest, and first of these by path";
}

TEST_F(LiveMetadataIndexTest, SortsByTheComparatorWhenTheOrderIsAnother) {
  make("old large", 1'000'000'000, 30);
  make("newer small", 1'000'000'001, 10);
  make("newest middling", 1'000'000'002, 20);
  const std::vector<std::string> bySize = {"newer small", "newest middling", "old large"};
  const struct {
    const char* what;
    std::optional<MDQueryDeclaredOrder> declared;
  } cases[] = {
      {"none declared", std::nullopt},
      {"declared by size", MDQueryDeclaredOrder{"kMDItemFSSize", false}},
      {"declared in error", MDQueryDeclaredOrder{"kMDItemContentModificationDate", true}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto query = executed("true", {}, {"kMDItemFSSize"}, smallestFirst, nullptr, c.declared);
    EXPECT_EQ(names(*query), bySize);
  }
}

TEST_F(LiveMetadataIndexTest, KeepsNewestFirstWhereTheComparatorSeesOnlyAbsentValues) {
  make("a", 1'000'000'000, 3);
  make("b", 1'000'000'001, 2);
  make("c", 1'000'000'002, 1);
  const auto query = executed("true", {}, {"kMDItemDueDate"}, smallestFirst, nullptr);
  EXPECT_THAT(names(*query), testing::ElementsAre("c", "b", "a"));
}

TEST_F(LiveMetadataIndexTest, GivesEveryItemAWholeRecord) {
  tree_.file("file.pdf", "12345");
  tree_.folder("folder");
  tree_.link("link", "nowhere");
  ASSERT_EQ(mkfifo((tree_ / "pipe").c_str(), 0644), 0);
  const auto query = executed("true");
  ASSERT_EQ(index_.MDQueryGetResultCount(*query), 4);
  for (std::int32_t i = 0; i < 4; ++i) {
    for (const std::string& attribute : recordAttributes()) {
      SCOPED_TRACE(attribute);
      EXPECT_TRUE(index_.MDQueryGetAttributeValueOfResultAtIndex(*query, attribute, i));
    }
  }
}

TEST_F(LiveMetadataIndexTest, GivesOnlyValuesOfItsValueList) {
  tree_.file("file.pdf", "12345");
  const auto query = executed("true", {"kMDItemFSSize", "kMDItemAuthors", "kMDItemFSNodeCount"});
  const auto value = [&](std::string_view name) {
    return index_.MDQueryGetAttributeValueOfResultAtIndex(*query, name, 0);
  };
  EXPECT_EQ(value("kMDItemFSSize"), Value(5));
  EXPECT_EQ(value("kMDItemAuthors"), std::nullopt);
  EXPECT_EQ(value("kMDItemDisplayName"), std::nullopt);
  EXPECT_EQ(value("kMDItemFSNodeCount"), std::nullopt) << "a file has no entries";
}

TEST_F(LiveMetadataIndexTest, MakesItemsOfReadableFilesOnly) {
  tree_.file("folder/file.pdf", "12345");
  ASSERT_EQ(chmod(tree_.file("private").c_str(), 0600), 0);
  identity_->uid = kStranger;
  const struct {
    std::string path;
    bool isMade;
  } cases[] = {
      {tree_ / "folder/file.pdf", true},
      {tree_ / "folder", true},
      {tree_ / "private", false},
      {tree_ / "missing", false},
      {"relative", false},
      {"", false},
      {"/", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(index_.MDItemCreate(c.path) != nullptr, c.isMade);
  }
}

TEST_F(LiveMetadataIndexTest, TellsAnItemsAttributes) {
  tree_.file("folder/file.pdf", "12345");
  const auto file = index_.MDItemCreate(tree_ / "folder/file.pdf");
  const auto folder = index_.MDItemCreate(tree_ / "folder/");
  ASSERT_TRUE(file && folder);
  EXPECT_EQ(index_.MDItemCopyAttribute(*file, "kMDItemPath"), Value(tree_ / "folder/file.pdf"));
  EXPECT_EQ(index_.MDItemCopyAttribute(*file, "kMDItemFSSize"), Value(5));
  EXPECT_EQ(index_.MDItemCopyAttribute(*file, "kMDItemContentType"), Value("com.adobe.pdf"));
  EXPECT_EQ(index_.MDItemCopyAttribute(*file, "kMDItemTextContent"), std::nullopt);
  EXPECT_EQ(index_.MDItemCopyAttribute(*folder, "kMDItemPath"), Value(tree_ / "folder"));
  EXPECT_EQ(index_.MDItemCopyAttribute(*folder, "kMDItemDisplayName"), Value("folder"));
  EXPECT_EQ(index_.MDItemCopyAttribute(*folder, "kMDItemFSNodeCount"), Value(1));
}

TEST_F(LiveMetadataIndexTest, NamesWhatItKnowsOfAnItem) {
  const auto item = index_.MDItemCreate(tree_.file("folder/file.pdf", "12345"));
  const auto folder = index_.MDItemCreate(tree_ / "folder");
  ASSERT_TRUE(item && folder);
  const std::vector<std::string> ofFile = index_.MDItemCopyAttributeNames(*item);
  EXPECT_THAT(ofFile, testing::IsSupersetOf(
                          {"kMDItemFSName", "kMDItemDisplayName", "kMDItemPath", "kMDItemFSSize",
                           "kMDItemContentType", "kMDItemContentTypeTree", "kMDItemKind",
                           "kMDItemFSOwnerUserID", "kMDItemContentModificationDate"}));
  EXPECT_THAT(ofFile, testing::Not(testing::Contains("kMDItemFSNodeCount")));
  EXPECT_THAT(ofFile, testing::Not(testing::Contains("kMDItemAuthors")));
  EXPECT_THAT(index_.MDItemCopyAttributeNames(*folder), testing::Contains("kMDItemFSNodeCount"));
}

TEST_F(LiveMetadataIndexTest, TellsTheAttributesThatItNamesInTheirOrder) {
  const auto item = index_.MDItemCreate(tree_.file("file.pdf", "12345"));
  const std::vector<std::string> names = index_.MDItemCopyAttributeNames(*item);
  const std::shared_ptr<Dictionary> values = index_.MDItemCopyAttributes(*item, names);
  ASSERT_EQ(values->size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    SCOPED_TRACE(names[i]);
    EXPECT_EQ(values->entries()[i].first.str(), names[i]);
    EXPECT_EQ(values->get(names[i]), index_.MDItemCopyAttribute(*item, names[i]));
  }
  EXPECT_TRUE(index_.MDItemCopyAttributes(*item, {"kMDItemAuthors", "x"})->empty());
}

TEST_F(LiveMetadataIndexTest, GivesEachAttributeTheTypeThatTheTableSays) {
  const query::AttributeSchema schema = shippedSchema();
  const auto isOfType = [](const Value& value, query::AttributeType type) {
    switch (type) {
      case query::AttributeType::kString:
        return value.kind() == ValueKind::kString;
      case query::AttributeType::kNumber:
        return value.isNumber() && value.kind() != ValueKind::kBoolean;
      case query::AttributeType::kDate:
        return value.kind() == ValueKind::kDate;
      case query::AttributeType::kBoolean:
        return value.kind() == ValueKind::kBoolean;
    }
    return false;
  };
  for (const std::string& path : {tree_.file("file.pdf"), tree_.folder("folder")}) {
    const auto item = index_.MDItemCreate(path);
    const auto values = index_.MDItemCopyAttributes(*item, index_.MDItemCopyAttributeNames(*item));
    for (const auto& [name, value] : *values) {
      SCOPED_TRACE(path + " " + name.str());
      const query::Attribute* attribute = schema.find(name.str());
      ASSERT_NE(attribute, nullptr);
      EXPECT_EQ(value.array() != nullptr, attribute->isMultiValued);
      EXPECT_TRUE(isOfType(value.array() ? value.array()->at(0) : value, attribute->type));
    }
  }
}

TEST_F(LiveMetadataIndexTest, ShowsNamesAsTextAndKeepsPathsToTheByte) {
  const std::string path = tree_.file("odd\xff.txt");
  const auto query = executed("true");
  const auto item = index_.MDQueryGetResultAtIndex(*query, 0);
  EXPECT_EQ(index_.MDItemCopyAttribute(*item, "kMDItemPath"), Value(path));
  EXPECT_EQ(index_.MDItemCopyAttribute(*item, "kMDItemFSName"), Value("odd\xEF\xBF\xBD.txt"));
  EXPECT_EQ(index_.MDQueryGetAttributeValueOfResultAtIndex(*query, kMDItemDisplayName, 0),
            Value("odd\xEF\xBF\xBD.txt"));
}

TEST_F(LiveMetadataIndexTest, NotesUnknownAttributesAndUnusableScopes) {
  const auto query = index_.MDQueryCreate("com_example_shot == \"1\"", {}, {});
  ASSERT_TRUE(query);
  index_.MDQuerySetSearchScope(*query, {tree_ / "missing"}, 0);
  EXPECT_TRUE(index_.MDQueryExecute(*query, kMDQuerySynchronous));
  const MDQueryNotes notes = index_.MDQueryCopyNotes(*query);
  EXPECT_THAT(notes.unknownAttributes, testing::ElementsAre("com_example_shot"));
  EXPECT_THAT(notes.unusableScopes, testing::ElementsAre(tree_ / "missing"));
  EXPECT_FALSE(notes.hasNoAccount);
}

TEST_F(LiveMetadataIndexTest, NotesAUserThatItDoesNotKnow) {
  tree_.file("file");
  identity_->uid = kStranger + 1;
  const auto query = executed("true");
  EXPECT_EQ(index_.MDQueryGetResultCount(*query), 0);
  EXPECT_TRUE(index_.MDQueryCopyNotes(*query).hasNoAccount);
}

TEST_F(LiveMetadataIndexTest, ListsTheAttributesOfItsTableAndTheirNames) {
  const std::vector<std::string> all = index_.MDSchemaCopyAllAttributes();
  ASSERT_EQ(all.size(), 167U);
  EXPECT_EQ(all.front(), "kMDItemFSName");
  EXPECT_EQ(all.back(), "kMDItemOriginalSource");
  EXPECT_EQ(index_.MDSchemaCopyDisplayNameForAttribute("kMDItemAuthors"), "Authors");
  EXPECT_EQ(index_.MDSchemaCopyDisplayNameForAttribute("not.an.attribute"), std::nullopt);
}

TEST_F(LiveMetadataIndexTest, ReportsItsProgressWhileAskedTo) {
  tree_.file("a/b");
  std::uint64_t seen = 0;
  index_.setProgress([&](std::uint64_t /*folders*/, std::uint64_t entries) { seen = entries; });
  executed("false");
  EXPECT_EQ(seen, 2U);
  seen = 0;
  index_.setProgress({});
  executed("false");
  EXPECT_EQ(seen, 0U);
}

TEST_F(LiveMetadataIndexTest, SaysThatAWalkWasGivenUpAndKeepsNoHits) {
  tree_.file("a");
  const auto query = executed("true");
  index_.MDQuerySetLongestWalk(*query, std::chrono::milliseconds(-1));
  EXPECT_FALSE(index_.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_TRUE(index_.MDQueryCopyNotes(*query).walkWasGivenUp);
  EXPECT_EQ(index_.MDQueryGetResultCount(*query), 0);
  index_.MDQuerySetLongestWalk(*query, std::chrono::hours(1));
  EXPECT_TRUE(index_.MDQueryExecute(*query, kMDQuerySynchronous));
  EXPECT_FALSE(index_.MDQueryCopyNotes(*query).walkWasGivenUp);
  EXPECT_EQ(index_.MDQueryGetResultCount(*query), 1);
}

TEST_F(LiveMetadataIndexTest, CountsWhatItLookedAtWhenItIsAsked) {
  for (const char* name : {"a.txt", "b.txt", "sub/c.pdf"}) make(name, 1, 1);
  const auto query = index_.MDQueryCreate("kMDItemFSName == \"*.txt\"", {}, {});
  index_.MDQuerySetSearchScope(*query, {tree_.path()}, 0);
  index_.MDQueryExecute(*query, kMDQuerySynchronous);
  EXPECT_TRUE(index_.MDQueryCopyNotes(*query).steps.empty());
  index_.MDQueryExecute(*query, kMDQuerySynchronous | kMDQueryCountsSteps);
  const std::vector<MDQueryStep> steps = index_.MDQueryCopyNotes(*query).steps;
  ASSERT_EQ(steps.size(), 1U);
  EXPECT_EQ(steps[0].asked, 4U);
  EXPECT_EQ(steps[0].left, 2U);
}

}  // namespace
}  // namespace vt
