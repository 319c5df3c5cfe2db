#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <sstream>

#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveTree.h"
#include "metadata/live/PlainTextReader.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/linux/FolderIndexSource.h"
#include "platform/linux/IndexedMetadataIndex.h"
#include "platform/linux/ScriptedIdentity.h"

namespace vt {
namespace {

constexpr std::uint32_t kStranger = 54321;

/// What a file says of itself: "title|width|days since 1970", each of which may be missing.
struct Told {
  std::optional<Value> title;
  std::optional<Value> width;
  std::optional<Value> created;
};

Told toldBy(const std::string& text) {
  std::istringstream fields(text);
  std::string title;
  std::string width;
  std::string days;
  std::getline(fields, title, '|');
  std::getline(fields, width, '|');
  std::getline(fields, days, '|');
  Told told;
  if (!title.empty()) told.title = title;
  if (!width.empty()) told.width = std::stoi(width);
  if (!days.empty()) told.created = Date{std::chrono::hours{24 * std::stoi(days)}};
  return told;
}

class TellingExtractor final : public Extractor {
 public:
  explicit TellingExtractor(const ContentTypes& types) : type_(types.typeOfFile("a.txt")) {}

  std::string_view name() const override { return "telling"; }
  std::uint32_t version() const override { return 1; }
  bool takes(ContentTypeId type) const override { return type == type_; }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId) override {
    const Told told = toldBy(plainTextOf(file));
    Extraction extraction;
    if (told.title) extraction.attributes["kMDItemTitle"] = *told.title;
    if (told.width) extraction.attributes["kMDItemPixelWidth"] = *told.width;
    if (told.created) extraction.attributes["kMDItemContentCreationDate"] = *told.created;
    return extraction;
  }

 private:
  ContentTypeId type_;
};

/// Absent values last; the context tells whether the others go down.
int byEachAttribute(const Value* const a[], const Value* const b[], const void* context) {
  const auto& sign = *static_cast<const int*>(context);
  for (int i = 0; i < 2; ++i) {
    if (a[i] == nullptr && b[i] == nullptr) continue;
    if (a[i] == nullptr) return 1;
    if (b[i] == nullptr) return -1;
    if (const int order = compareNaturally(*a[i], *b[i]); order != 0) return sign * order;
  }
  return 0;
}

class AttributesInFiles : public testing::Test {
 protected:
  struct Made {
    std::string path;
    std::time_t modified = 0;
    Told told;
    bool isReadable = true;  // to a stranger
  };

  AttributesInFiles() {
    std::vector<std::unique_ptr<Extractor>> list;
    list.push_back(std::make_unique<TellingExtractor>(*types_));
    extractors_.emplace(*types_, std::move(list));
  }

  /// Writes files of all sorts and looks into them.
  void make(int count) {
    std::mt19937 random(2024);
    const auto one = [&](unsigned outOf) { return random() % outOf == 0; };
    for (int i = 0; i < count; ++i) {
      Made made;
      const std::string text = (one(4) ? "" : "title " + std::to_string(random() % 40)) + "|" +
                               (one(4) ? "" : std::to_string(random() % 20)) + "|" +
                               (one(2) ? "" : std::to_string(random() % 10'000));
      made.told = toldBy(text);
      made.modified = 1'000'000 + static_cast<std::time_t>(random() % 30);
      made.isReadable = !one(5);
      made.path = tree_.file("f" + std::to_string(i) + ".txt", text);
      const timespec times[2] = {{made.modified, 0}, {made.modified, 0}};
      ASSERT_EQ(utimensat(AT_FDCWD, made.path.c_str(), times, 0), 0);
      if (!made.isReadable) chmod(made.path.c_str(), 0600);
      made_.push_back(made);
    }
    std::ranges::sort(made_, [](const Made& a, const Made& b) {
      return a.modified != b.modified ? a.modified > b.modified : a.path < b.path;
    });
    lookIntoFiles();
  }

  void lookIntoFiles() {
    indexed_.emplace(*types_, &*extractors_);
    indexed_->run({tree_.path()});
    index_.emplace(live_, identity_, std::make_shared<FolderIndexSource>(indexed_->path(), types_));
  }

  /// The paths of what the query finds, in order.
  std::vector<std::string> found(const std::string& text,
                                 const std::vector<std::string>& sorting = {}, int sign = 1) {
    const auto query = index_->MDQueryCreate(text, {"kMDItemPath"}, sorting);
    if (!query) throw std::runtime_error("query rejected: " + text);
    if (!sorting.empty()) {
      index_->MDQuerySetSortComparator(*query, byEachAttribute, &sign, std::nullopt);
    }
    index_->MDQuerySetSearchScope(*query, {tree_.path()}, 0);
    EXPECT_TRUE(index_->MDQueryExecute(*query, kMDQuerySynchronous));
    EXPECT_EQ(index_->MDQueryCopyNotes(*query).walkedBecause, "");
    std::vector<std::string> paths;
    for (std::int32_t i = 0; i < index_->MDQueryGetResultCount(*query); ++i) {
      paths.push_back(*index_->MDQueryGetAttributeValueOfResultAtIndex(*query, "kMDItemPath", i)
                           ->get<std::string>());
    }
    return paths;
  }

  /// The same, by looking at what was made.
  template <class Passes>
  std::vector<std::string> expected(Passes passes) const {
    std::vector<std::string> paths;
    for (const Made& made : made_) {
      if ((made.isReadable || identity_->uid == 0) && passes(made)) paths.push_back(made.path);
    }
    return paths;
  }

  LiveTree tree_;
  std::shared_ptr<const ContentTypes> types_ = std::make_shared<const ContentTypes>(shippedTypes());
  std::shared_ptr<ScriptedIdentity> identity_ = std::make_shared<ScriptedIdentity>();
  std::shared_ptr<LiveMetadataIndex> live_ = std::make_shared<LiveMetadataIndex>(
      types_, std::make_shared<const query::AttributeSchema>(shippedSchema()), identity_,
      [](std::uint32_t uid) -> std::optional<Credentials> { return Credentials(uid, uid, {}); });
  std::vector<Made> made_;  // newest first
  std::optional<Extractors> extractors_;
  std::optional<IndexedTree> indexed_;
  std::optional<IndexedMetadataIndex> index_;
};

const Value* pointer(const std::optional<Value>& value) { return value ? &*value : nullptr; }

TEST_F(AttributesInFiles, OrderHitsAsAComparisonOfAllDoes) {
  make(1300);
  for (const std::uint32_t uid : {0U, kStranger}) {
    for (const char* text : {"true", "kMDItemFSName == \"f1*\"", "kMDItemFSName == \"f99.txt\""}) {
      for (int sign : {1, -1}) {
        SCOPED_TRACE(std::to_string(uid) + " " + text + " " + std::to_string(sign));
        identity_->uid = uid;
        std::vector<const Made*> wanted;
        const std::vector<std::string> unsorted = found(text);
        for (const Made& made : made_) {
          if (std::ranges::find(unsorted, made.path) != unsorted.end()) wanted.push_back(&made);
        }
        EXPECT_EQ(wanted.size(), unsorted.size());
        std::ranges::stable_sort(wanted, [&](const Made* a, const Made* b) {
          const Value* const first[] = {pointer(a->told.title), pointer(a->told.width)};
          const Value* const second[] = {pointer(b->told.title), pointer(b->told.width)};
          return byEachAttribute(first, second, &sign) < 0;
        });
        std::vector<std::string> paths;
        for (const Made* made : wanted) paths.push_back(made->path);
        EXPECT_EQ(found(text, {"kMDItemTitle", "kMDItemPixelWidth"}, sign), paths);
      }
    }
  }
}

TEST_F(AttributesInFiles, OrderTheRestByTheirStatusesAsBefore) {
  make(60);
  const auto newest = found("true", {"kMDItemFSContentChangeDate", "kMDItemFSName"}, -1);
  ASSERT_EQ(newest.size(), made_.size());
  EXPECT_EQ(found("true", {"kMDItemNothing", "kMDItemNothing"}),
            expected([](const Made&) { return true; }));
}

TEST_F(AttributesInFiles, SayWhenAPictureWasMadeRatherThanWhenItWasCopied) {
  make(300);
  const Date limit{std::chrono::hours{24 * 5000}};
  const auto isBefore = [&](const Made& made) {
    return made.told.created && *made.told.created->get<Date>() < limit;
  };
  const std::string text = "kMDItemContentCreationDate < $time.iso(1983-09-10T00:00:00Z)";
  const std::string notText = "kMDItemContentCreationDate >= $time.iso(1983-09-10T00:00:00Z)";
  for (const std::uint32_t uid : {0U, kStranger}) {
    identity_->uid = uid;
    EXPECT_EQ(found(text), expected(isBefore));
    EXPECT_EQ(found(notText), expected([&](const Made& made) { return !isBefore(made); }));
    EXPECT_EQ(found(text + " && kMDItemFSName == \"f1*\""), expected([&](const Made& made) {
                return isBefore(made) && made.path.find("/f1") != std::string::npos;
              }));
    EXPECT_TRUE(found("kMDItemFSCreationDate < $time.iso(1983-09-10T00:00:00Z)").empty());
  }
}

TEST_F(AttributesInFiles, AreToldOfAHitWhateverTheQueryAskedFor) {
  make(40);
  const auto query = index_->MDQueryCreate(
      "kMDItemFSName == \"*.txt\"",
      {"kMDItemPath", "kMDItemTitle", "kMDItemContentCreationDate", "kMDItemNothing"}, {});
  index_->MDQuerySetSearchScope(*query, {tree_.path()}, 0);
  ASSERT_TRUE(index_->MDQueryExecute(*query, kMDQuerySynchronous));
  ASSERT_EQ(index_->MDQueryGetResultCount(*query), 40);
  for (std::int32_t i = 0; i < 40; ++i) {
    const Made& made = made_[static_cast<std::size_t>(i)];
    const auto value = [&](const char* name) {
      return index_->MDQueryGetAttributeValueOfResultAtIndex(*query, name, i);
    };
    EXPECT_EQ(value("kMDItemTitle"), made.told.title);
    if (made.told.created) {
      EXPECT_EQ(value("kMDItemContentCreationDate"), made.told.created);
    }
    EXPECT_TRUE(value("kMDItemContentCreationDate"));
    EXPECT_FALSE(value("kMDItemNothing"));
    EXPECT_FALSE(value("kMDItemPixelWidth")) << "it is not in the list";
    const auto item = index_->MDQueryGetResultAtIndex(*query, i);
    EXPECT_EQ(index_->MDItemCopyAttribute(*item, "kMDItemPixelWidth"), made.told.width);
  }
}

TEST_F(AttributesInFiles, AreToldOfASingleItemToWhoMayReadIt) {
  make(80);
  for (const std::uint32_t uid : {0U, kStranger}) {
    identity_->uid = uid;
    for (const Made& made : made_) {
      SCOPED_TRACE(made.path);
      const auto item = index_->MDItemCreate(made.path);
      ASSERT_EQ(item != nullptr, uid == 0 || made.isReadable);
      if (!item) continue;
      EXPECT_EQ(index_->MDItemCopyAttribute(*item, "kMDItemTitle"), made.told.title);
      EXPECT_EQ(index_->MDItemCopyAttribute(*item, "kMDItemPixelWidth"), made.told.width);
      const auto created = index_->MDItemCopyAttribute(*item, "kMDItemContentCreationDate");
      EXPECT_EQ(made.told.created ? made.told.created : created, created);
      const std::vector<std::string> names = index_->MDItemCopyAttributeNames(*item);
      EXPECT_EQ(std::ranges::find(names, "kMDItemTitle") != names.end(),
                made.told.title.has_value());
      EXPECT_THAT(names, testing::Contains("kMDItemFSSize"));
    }
  }
}

TEST_F(AttributesInFiles, AreToldOfASingleItemAsLongAsItHoldsTheSame) {
  const std::string path = tree_.file("file.txt", "a title|5|");
  lookIntoFiles();
  const auto before = index_->MDItemCreate(path);
  EXPECT_EQ(index_->MDItemCopyAttribute(*before, "kMDItemTitle"), Value("a title"));
  tree_.file("file.txt", "another title|5|");
  const auto after = index_->MDItemCreate(path);
  EXPECT_FALSE(index_->MDItemCopyAttribute(*after, "kMDItemTitle"));
  indexed_->run({tree_.path()});
  EXPECT_EQ(index_->MDItemCopyAttribute(*index_->MDItemCreate(path), "kMDItemTitle"),
            Value("another title"));
}

TEST_F(AttributesInFiles, AreNotToldOfFoldersAndWithoutAnIndex) {
  const std::string path = tree_.file("file.txt", "a title|5|");
  lookIntoFiles();
  const auto folder = index_->MDItemCreate(tree_.path());
  EXPECT_FALSE(index_->MDItemCopyAttribute(*folder, "kMDItemTitle"));
  IndexedMetadataIndex without(live_, identity_,
                               std::make_shared<FolderIndexSource>(tree_ / "none", types_));
  const auto item = without.MDItemCreate(path);
  EXPECT_FALSE(without.MDItemCopyAttribute(*item, "kMDItemTitle"));
  EXPECT_TRUE(without.MDItemCopyAttribute(*item, "kMDItemFSSize"));
}

}  // namespace
}  // namespace vt
