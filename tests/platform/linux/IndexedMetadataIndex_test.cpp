#include "platform/linux/IndexedMetadataIndex.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <ctime>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "metadata/catalogue/CatalogueFile.h"
#include "metadata/engine/FolderTable.h"
#include "metadata/extract/PlainTextExtractor.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveTree.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/linux/CatalogueSource.h"
#include "platform/linux/ScriptedIdentity.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kStranger = 54321;

const std::vector<std::string>& everyAttribute() {
  static const std::vector<std::string> kList = {
      "kMDItemPath",           "kMDItemFSName",         "kMDItemDisplayName",
      "kMDItemFSInvisible",    "kMDItemContentType",    "kMDItemContentTypeTree",
      "kMDItemKind",           "_kMDItemGroupId",       "kMDItemFSContentChangeDate",
      "kMDItemFSCreationDate", "kMDItemLastUsedDate",   "kMDItemAttributeChangeDate",
      "kMDItemFSSize",         "kMDItemPhysicalSize",   "kMDItemFSOwnerUserID",
      "kMDItemFSNodeCount",    "kMDItemFSOwnerGroupID", "kMDItemAuthors",
      "kMDItemTitle"};
  return kList;
}

int smallestFirst(const Value* const a[], const Value* const b[], const void* /*context*/) {
  return compareNaturally(*a[0], *b[0]);
}

/// An index that is there when the test says so.
class TestSource final : public IndexSource {
 public:
  explicit TestSource(const Identity& identity) : identity_(identity) {}

  void refresh() override {
    refreshedAs.push_back(identity_.geteuid());
    open_ = index;
  }
  std::shared_ptr<const OpenIndex> freshAt(Date) override { return open_; }
  std::string whyNotAt(Date) const override { return "there is no index"; }
  Result<std::shared_ptr<const IndexedContents>, std::string> contentsOf(
      const OpenIndex& open) override {
    lookedIntoAs.push_back(identity_.geteuid());
    if (!catalogue) return std::string("the index holds no text");
    return catalogue->contentsOf(open);
  }

  std::shared_ptr<const OpenIndex> index;
  std::optional<CatalogueSource> catalogue;
  std::vector<std::uint32_t> lookedIntoAs;
  std::vector<std::uint32_t> refreshedAs;

 private:
  const Identity& identity_;
  std::shared_ptr<const OpenIndex> open_;
};

/// Takes the text of files that begin with "A" for their title.
class TitleExtractor final : public Extractor {
 public:
  explicit TitleExtractor(const ContentTypes& types) : plain_(types) {}
  static std::optional<Extractors> alone(const ContentTypes& types) {
    std::vector<std::unique_ptr<Extractor>> list;
    list.push_back(std::make_unique<TitleExtractor>(types));
    return Extractors(types, std::move(list));
  }

  std::string_view name() const override { return "title"; }
  std::uint32_t version() const override { return 1; }
  bool takes(ContentTypeId type) const override { return plain_.takes(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override {
    Extraction found = plain_.extract(file, type).value();
    if (!found.text->starts_with('A')) return found;
    found.attributes = {{"kMDItemTitle", *found.text}, {"kMDItemPixelWidth", 640}};
    found.text.reset();
    return found;
  }

 private:
  PlainTextExtractor plain_;
};

class IndexedMetadataIndexTest : public testing::Test {
 protected:
  IndexedMetadataIndexTest() {
    make("old.txt", 1'000'000, 30);
    make("sub/new.pdf", 3'000'000, 10);
    make("sub/secret.txt", 2'000'000, 20);
    make(".hidden", 500'000, 0);
    make("sub/b\xFF.txt", 2'000'000, 5);
    tree_.link("link", "nowhere");
    chmod((tree_ / "sub/secret.txt").c_str(), 0600);
  }

  void buildIndex() { source_->index = IndexedTree(tree_.path(), *types_).index(); }

  const IndexedTree& buildIndexWithContents(bool looksIntoFiles = true) {
    if (!extractors_) extractors_.emplace(builtInExtractors(*types_));
    const IndexedTree& indexed = indexed_.emplace(*types_, &*extractors_);
    const auto done = Indexer(indexed.folder(), indexed.lock(), *types_, &*extractors_)
                          .run({tree_.path()}, [&](const IndexingProgress& progress) {
                            return looksIntoFiles || !progress.contents;
                          });
    EXPECT_TRUE(done && *done && !(*done)->contentError);
    source_->index = indexed.index();
    source_->catalogue.emplace(indexed.path());
    return indexed;
  }

  std::shared_ptr<MDQuery> executed(MetadataIndex& index, const std::string& text,
                                    const std::vector<std::string>& scopes,
                                    const std::vector<std::string>& sorting = {}) const {
    auto query = index.MDQueryCreate(text, everyAttribute(), sorting);
    if (!query) throw std::runtime_error("query rejected: " + text);
    if (!sorting.empty()) {
      index.MDQuerySetSortComparator(*query, smallestFirst, nullptr, std::nullopt);
    }
    index.MDQuerySetSearchScope(*query, scopes, 0);
    EXPECT_TRUE(index.MDQueryExecute(*query, kMDQuerySynchronous));
    return query;
  }
  std::shared_ptr<MDQuery> executed(const std::string& text) {
    return executed(index_, text, {tree_.path()});
  }
  std::vector<std::string> names(MetadataIndex& index, MDQuery& query) const {
    std::vector<std::string> result;
    for (std::int32_t i = 0; i < index.MDQueryGetResultCount(query); ++i) {
      result.push_back(*index.MDQueryGetAttributeValueOfResultAtIndex(query, "kMDItemFSName", i)
                            ->get<std::string>());
    }
    return result;
  }
  std::vector<std::string> names(MDQuery& query) { return names(index_, query); }

  void make(const char* name, std::time_t modified, std::size_t size) {
    const std::string path = tree_.file(name, std::string(size, 'x'));
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }

  LiveTree tree_;
  std::optional<Extractors> extractors_;
  std::optional<IndexedTree> indexed_;
  std::shared_ptr<const ContentTypes> types_ = std::make_shared<const ContentTypes>(shippedTypes());
  std::shared_ptr<ScriptedIdentity> identity_ = std::make_shared<ScriptedIdentity>();
  std::shared_ptr<TestSource> source_ = std::make_shared<TestSource>(*identity_);
  std::shared_ptr<LiveMetadataIndex> live_ = std::make_shared<LiveMetadataIndex>(
      types_, std::make_shared<const query::AttributeSchema>(shippedSchema()), identity_,
      [](std::uint32_t uid) -> std::optional<Credentials> {
        if (uid != kStranger) return std::nullopt;
        return Credentials(uid, uid, {});
      });
  IndexedMetadataIndex index_{live_, identity_, source_};
};

TEST_F(IndexedMetadataIndexTest, GivesTheHitsAndValuesOfTheLiveIndex) {
  buildIndex();
  const auto ours = executed("true");
  const auto live = executed(*live_, "true", {tree_.path()});
  ASSERT_EQ(names(*ours), names(*live_, *live));
  EXPECT_EQ(index_.MDQueryCopyNotes(*ours).walkedBecause, "");
  for (std::int32_t i = 0; i < live_->MDQueryGetResultCount(*live); ++i) {
    const auto ourItem = index_.MDQueryGetResultAtIndex(*ours, i);
    const auto liveItem = live_->MDQueryGetResultAtIndex(*live, i);
    for (const std::string& attribute : everyAttribute()) {
      SCOPED_TRACE(std::to_string(i) + " " + attribute);
      const auto expected = live_->MDItemCopyAttribute(*liveItem, attribute);
      EXPECT_EQ(index_.MDItemCopyAttribute(*ourItem, attribute), expected);
      EXPECT_EQ(index_.MDQueryGetAttributeValueOfResultAtIndex(*ours, attribute, i), expected);
    }
  }
}

TEST_F(IndexedMetadataIndexTest, AnswersFromTheIndexAndNotFromTheFiles) {
  buildIndex();
  make("later.txt", 9'000'000, 1);
  EXPECT_EQ(index_.MDQueryGetResultCount(*executed("kMDItemFSName == \"later*\"")), 0);
  buildIndex();
  EXPECT_EQ(index_.MDQueryGetResultCount(*executed("kMDItemFSName == \"later*\"")), 1);
}

TEST_F(IndexedMetadataIndexTest, GivesEachTypesHitsOneArray) {
  buildIndex();
  const auto query = executed("kMDItemFSName == \"*.txt\"");
  const auto tree = [&](std::int32_t i) {
    return index_.MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemContentTypeTree", i)
        ->array();
  };
  EXPECT_EQ(tree(0), tree(1));
}

TEST_F(IndexedMetadataIndexTest, ShowsAUserWhatHeMayReadAlone) {
  buildIndex();
  identity_->uid = kStranger;
  const auto query = executed("kMDItemFSName == \"*.txt\"c");
  EXPECT_THAT(names(*query), ElementsAre("b\uFFFD.txt", "old.txt"));
  EXPECT_EQ(identity_->uid, kStranger);
  EXPECT_THAT(source_->refreshedAs, ElementsAre(0U)) << "the index folder is its owner's";
}

TEST_F(IndexedMetadataIndexTest, OpensTheIndexAsItsOwnerBeforehand) {
  identity_->uid = kStranger;
  index_.prepare();
  EXPECT_THAT(source_->refreshedAs, ElementsAre(0U));
}

TEST_F(IndexedMetadataIndexTest, WalksAndSaysSoWhenThereIsNoIndex) {
  const auto query = executed("kMDItemFSName == \"new.pdf\"");
  EXPECT_THAT(names(*query), ElementsAre("new.pdf"));
  const MDQueryNotes notes = index_.MDQueryCopyNotes(*query);
  EXPECT_EQ(notes.walkedBecause, "there is no index");
}

TEST_F(IndexedMetadataIndexTest, CountsWhatEachStepLeavesWhenItIsAsked) {
  buildIndex();
  const auto query = index_.MDQueryCreate("kMDItemFSName == \"*.txt\"", {}, {});
  index_.MDQuerySetSearchScope(*query, {tree_ / "sub"}, 0);
  index_.MDQueryExecute(*query, kMDQuerySynchronous);
  EXPECT_THAT(index_.MDQueryCopyNotes(*query).steps, IsEmpty());
  index_.MDQueryExecute(*query, kMDQuerySynchronous | kMDQueryCountsSteps);
  const std::vector<MDQueryStep> steps = index_.MDQueryCopyNotes(*query).steps;
  ASSERT_EQ(steps.size(), 2U);
  EXPECT_EQ(steps[0].text, "kMDItemFSName == \"*.txt\"");
  EXPECT_EQ(steps[0].asked, 7U);
  EXPECT_EQ(steps[0].left, 3U);
  EXPECT_EQ(steps[1].asked, 3U);
  EXPECT_EQ(steps[1].left, 2U);
}

TEST_F(IndexedMetadataIndexTest, WalksForText) {
  buildIndex();
  const auto query = executed("kMDItemTextContent == \"xxxxxxxxxx*\"");
  EXPECT_THAT(names(*query), ElementsAre("secret.txt", "old.txt"));
  EXPECT_EQ(index_.MDQueryCopyNotes(*query).walkedBecause, "the index holds no text");
}

TEST_F(IndexedMetadataIndexTest, FindsTextThatTheIndexerHasLookedInto) {
  tree_.file("words.txt", "The budget of 2024");
  buildIndexWithContents();
  identity_->uid = kStranger;
  // What is gone since proves that the index answers.
  std::filesystem::remove(tree_ / "words.txt");
  const auto query = executed("kMDItemTextContent == \"budget of\" || ** == \"xxxxxxxxxx*\"cd");
  EXPECT_THAT(names(*query), ElementsAre("words.txt", "old.txt")) << "and not secret.txt";
  const MDQueryNotes notes = index_.MDQueryCopyNotes(*query);
  EXPECT_EQ(notes.walkedBecause, "");
  EXPECT_EQ(notes.filesNotLookedInto, 0U);
  EXPECT_THAT(source_->lookedIntoAs, ElementsAre(0));
}

TEST_F(IndexedMetadataIndexTest, FindsPatternsWithinWordsWithoutAWalk) {
  tree_.file("words.txt", "The budget of 2024");
  buildIndexWithContents();
  std::filesystem::remove(tree_ / "words.txt");
  for (const char* text : {"kMDItemTextContent == \"*dget\"", "** == \"b?dg*t 2?24\"cdt",
                           "kMDItemTextContent == \"*he b*t of\""}) {
    SCOPED_TRACE(text);
    const auto query = executed(text);
    EXPECT_THAT(names(*query), ElementsAre("words.txt"));
    EXPECT_EQ(index_.MDQueryCopyNotes(*query).walkedBecause, "");
  }
}

TEST_F(IndexedMetadataIndexTest, FindsTypedWordsInTagsAndComments) {
  const std::pair<const char*, const char*> given[] = {{"old.txt", "user.xdg.tags"},
                                                       {"sub/new.pdf", "user.xdg.comment"},
                                                       {"sub/secret.txt", "user.xdg.tags"}};
  for (const auto& [name, attribute] : given) {
    const std::string_view value = "Very urgent";
    ASSERT_EQ(::setxattr((tree_ / name).c_str(), attribute, value.data(), value.size(), 0), 0);
  }
  buildIndexWithContents();
  identity_->uid = kStranger;
  const auto none = [](const std::string& /*name*/) { return std::vector<std::string>(); };
  const auto typed = index_.MDQueryStringFromTyped("urgent", {none, none}, /*readsFiles=*/true);
  ASSERT_TRUE(typed);
  const auto query = executed(typed->query);
  EXPECT_THAT(names(*query), ElementsAre("new.pdf", "old.txt")) << "and not secret.txt";
  EXPECT_EQ(index_.MDQueryCopyNotes(*query).walkedBecause, "");
}

TEST_F(IndexedMetadataIndexTest, CountsReadableFilesThatWereNotLookedIntoYet) {
  buildIndexWithContents(/*looksIntoFiles=*/false);
  identity_->uid = kStranger;
  const auto query = executed("kMDItemTextContent == \"xxxxxxxxxx*\"");
  EXPECT_THAT(names(*query), IsEmpty());
  EXPECT_EQ(index_.MDQueryCopyNotes(*query).filesNotLookedInto, 2U) << "and not secret.txt";
  const auto byName = executed("kMDItemFSName == \"old.txt\"");
  EXPECT_EQ(index_.MDQueryCopyNotes(*byName).filesNotLookedInto, 0U);
}

TEST_F(IndexedMetadataIndexTest, TellsAttributesThatStandInFiles) {
  extractors_ = TitleExtractor::alone(*types_);
  tree_.file("sub/words.txt", "A title");
  buildIndexWithContents();
  for (const char* text :
       {"kMDItemTitle == \"A title\"", "kMDItemPixelWidth > 600", "* == \"*title\"",
        "** == \"title\"w", "kMDItemTitle == \"*\" && kMDItemTitle != \"x*\""}) {
    SCOPED_TRACE(text);
    const auto query = executed(text);
    ASSERT_THAT(names(*query), ElementsAre("words.txt"));
    EXPECT_EQ(index_.MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemTitle", 0),
              Value("A title"));
    const auto item = index_.MDQueryGetResultAtIndex(*query, 0);
    EXPECT_EQ(index_.MDItemCopyAttribute(*item, "kMDItemPixelWidth"), Value(640));
    EXPECT_EQ(index_.MDItemCopyAttribute(*item, "kMDItemAuthors"), std::nullopt);
    EXPECT_THAT(index_.MDItemCopyAttributeNames(*item), testing::Contains("kMDItemTitle"));
    EXPECT_EQ(index_.MDQueryCopyNotes(*query).walkedBecause, "");
  }
}

TEST_F(IndexedMetadataIndexTest, WalksWhenTheCatalogueIsDamaged) {
  const IndexedTree& indexed = buildIndexWithContents();
  writeFile(indexed.path() + "/" + kCatalogueName, std::string(20'000, 'x'));
  const auto query = executed("kMDItemTextContent == \"xxxxxxxxxx*\"");
  EXPECT_THAT(names(*query), ElementsAre("secret.txt", "old.txt"));
  EXPECT_THAT(index_.MDQueryCopyNotes(*query).walkedBecause, testing::HasSubstr("is damaged"));
  const auto byName = executed("kMDItemFSName == \"old.txt\" || kMDItemTitle == 1");
  EXPECT_THAT(names(*byName), ElementsAre("old.txt"));
  EXPECT_EQ(index_.MDQueryCopyNotes(*byName).walkedBecause, "");
}

TEST_F(IndexedMetadataIndexTest, WalksFoldersThatTheIndexDoesNotHold) {
  buildIndex();
  tree_.file("young/file.txt");
  const LiveTree other;
  const std::string above = tree_.path().substr(0, tree_.path().rfind('/'));
  struct Case {
    const char* what;
    std::string scope;
    bool isWalked;
  };
  const Case cases[] = {
      {"all of it", tree_.path(), false},
      {"a part of it", tree_ / "sub", false},
      {"another way to a part", tree_ / "sub/../sub", false},
      {"made later", tree_ / "young", true},
      {"elsewhere", other.path(), true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto query = executed(index_, "kMDItemFSName == \"no such\"", {c.scope});
    EXPECT_EQ(index_.MDQueryCopyNotes(*query).walkedBecause,
              c.isWalked ? "the index does not hold " + c.scope : "");
  }
  EXPECT_FALSE(indexedFolderAt(source_->index->folders(), above)) << "only on the way to it";
}

TEST_F(IndexedMetadataIndexTest, CallsHitsByThePathOfTheScopeAsItWasGiven) {
  buildIndex();
  const LiveTree other;
  other.link("way", tree_.path());
  const auto query = executed(index_, "kMDItemFSName == \"new.pdf\"", {other / "way"});
  const auto path = index_.MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemPath", 0);
  EXPECT_EQ(path, Value(other / "way/sub/new.pdf"));
}

TEST_F(IndexedMetadataIndexTest, NotesScopesThatCannotBeUsed) {
  buildIndex();
  const auto query =
      executed(index_, "true && kMDItemNoSuchThing == 1", {tree_.path(), tree_ / "missing"});
  const MDQueryNotes notes = index_.MDQueryCopyNotes(*query);
  EXPECT_THAT(notes.unusableScopes, ElementsAre(tree_ / "missing"));
  EXPECT_THAT(notes.unknownAttributes, ElementsAre("kMDItemNoSuchThing"));
  EXPECT_EQ(notes.walkedBecause, "");
}

TEST_F(IndexedMetadataIndexTest, FindsNothingForAnUnknownAccount) {
  buildIndex();
  identity_->uid = 777;
  const auto query = executed("true");
  EXPECT_EQ(index_.MDQueryGetResultCount(*query), 0);
  EXPECT_TRUE(index_.MDQueryCopyNotes(*query).hasNoAccount);
  EXPECT_EQ(index_.MDQueryCopyNotes(*query).walkedBecause, "");
}

TEST_F(IndexedMetadataIndexTest, SortsByTheComparator) {
  buildIndex();
  const auto query =
      executed(index_, "kMDItemFSName == \"*.*\"", {tree_ / "sub"}, {"kMDItemFSSize"});
  EXPECT_THAT(names(*query), ElementsAre("b\uFFFD.txt", "new.pdf", "secret.txt"));
}

TEST_F(IndexedMetadataIndexTest, TellsItemsThatWereMadeOfPaths) {
  buildIndex();
  const auto item = index_.MDItemCreate(tree_ / "old.txt");
  ASSERT_TRUE(item);
  EXPECT_EQ(index_.MDItemCopyAttribute(*item, "kMDItemFSSize"), Value(30));
}

TEST_F(IndexedMetadataIndexTest, KeepsTheHitsOfAGenerationThatWasReplaced) {
  buildIndex();
  const auto query = executed("kMDItemFSName == \"new.pdf\"");
  source_->index = nullptr;
  index_.prepare();
  EXPECT_THAT(names(*query), ElementsAre("new.pdf"));
}

}  // namespace
}  // namespace vt
