#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <set>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "metadata/extract/PlainTextExtractor.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

/// Looks into plain text, as told to, and counts.
class CountingExtractor final : public Extractor {
 public:
  explicit CountingExtractor(const ContentTypes& types) : plain_(types) {}

  std::string_view name() const override { return "counting"; }
  std::uint32_t version() const override { return newVersion; }
  bool takes(ContentTypeId type) const override { return plain_.takes(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override {
    ++looks;
    if (before) before();
    if (failure) return *failure;
    return plain_.extract(file, type);
  }

  bool isOtherProcess() const override { return mostAtOnce > 0; }
  std::unique_ptr<Look> begin(int file, ContentTypeId type, FileOrigin origin) override {
    const FileStatus status = statusOf(file).value();
    origins[{status.ownership.uid, status.ownership.mode & 0777}].insert(origin);
    if (mostAtOnce == 0) return Extractor::begin(file, type, origin);
    if (underWay == mostAtOnce) return nullptr;
    mostUnderWay = std::max(mostUnderWay, ++underWay);
    return std::make_unique<LookAside>(*this, file, type);
  }

  int looks = 0;
  int mostAtOnce = 0;  // files that are looked into aside; 0 for none
  int underWay = 0;
  int mostUnderWay = 0;
  bool isEverDone = true;
  std::map<std::pair<std::uint32_t, std::uint32_t>, std::set<FileOrigin>> origins;  // by uid, mode
  std::uint32_t newVersion = 1;
  std::function<void()> before;
  std::optional<ExtractionFailure> failure;

 private:
  /// Finds what there is when it is asked for it.
  class LookAside final : public Look {
   public:
    LookAside(CountingExtractor& extractor, int file, ContentTypeId type)
        : extractor_(extractor), file_(file), type_(type) {}
    ~LookAside() override { --extractor_.underWay; }

    bool isDone(std::chrono::milliseconds /*patience*/) override { return extractor_.isEverDone; }
    Result<Extraction, ExtractionFailure> finish() override {
      return extractor_.extract(file_, type_);
    }

   private:
    CountingExtractor& extractor_;
    int file_;
    ContentTypeId type_;
  };

  PlainTextExtractor plain_;
};

class ContentIndexing : public testing::Test {
 protected:
  ContentIndexing() {
    auto owned = std::make_unique<CountingExtractor>(types_);
    extractor_ = owned.get();
    std::vector<std::unique_ptr<Extractor>> list;
    list.push_back(std::move(owned));
    extractors_.emplace(types_, std::move(list));
    index_.emplace(types_, &*extractors_);
  }

  void write(const std::string& name, const std::string& text) { writeFile(files_ / name, text); }
  IndexingReport run() { return index_->run({std::filesystem::canonical(files_.path())}); }

  /// The names of the files whose text has the words.
  std::vector<std::string> filesWith(const std::string& words) {
    const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
    throwIf(reader->lookAnew());
    const IndexGeneration generation = index_->generation();
    const SegmentColumns& segment = generation.segment->columns();
    const auto rows =
        valueOrThrow(reader->rowsOf(generation.segment->identity(), segment.rowCount()));
    if (!rows) throw std::runtime_error("nothing is said of the rows");
    const ContentNumber end = valueOrThrow(reader->end());
    const Bitmap found = valueOrThrow(reader->withWords(contentQueryOf(words, 0), end));
    std::vector<std::string> names;
    for (std::size_t row = 0; row < rows->size(); ++row) {
      const ContentNumber content = (*rows)[row];
      if (content != kWithoutContent && content != kPendingContent && found.contains(content)) {
        names.emplace_back(segment.name(row));
      }
    }
    std::ranges::sort(names);
    return names;
  }

  using Names = std::vector<std::string>;

  const ContentTypes types_ = shippedTypes();
  TemporaryFolder files_;
  CountingExtractor* extractor_ = nullptr;
  std::optional<Extractors> extractors_;
  std::optional<IndexedTree> index_;
};

TEST_F(ContentIndexing, TellsWhichFilesMayShareAProcess) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser, who gives files to others";
  struct Case {
    const char* name;
    uid_t owner;
    mode_t mode;
  };
  const Case cases[] = {
      {"one.txt", 2001, 0640},      {"two.txt", 2001, 0640},       {"private.txt", 2001, 0600},
      {"public.txt", 2001, 0644},   {"another's.txt", 2002, 0640}, {"root's.txt", 0, 0640},
      {"and more.txt", 2001, 0640},
  };
  for (const Case& c : cases) {
    write(c.name, "text");
    ASSERT_EQ(chown((files_ / c.name).c_str(), c.owner, 3001), 0);
    ASSERT_EQ(chmod((files_ / c.name).c_str(), c.mode), 0);
  }
  extractor_->mostAtOnce = 2;
  run();
  std::set<FileOrigin> different;
  for (const auto& [whose, origins] : extractor_->origins) {
    SCOPED_TRACE(testing::Message() << whose.first << ' ' << std::oct << whose.second);
    EXPECT_EQ(origins.size(), 1U);
    EXPECT_EQ(origins.contains(kOwnOrigin), whose.first == 0);
    different.insert(origins.begin(), origins.end());
  }
  EXPECT_EQ(different.size(), 5U);
}

TEST_F(ContentIndexing, GivesAFileWithOtherNamesAProcessOfItsOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser, who gives files to others";
  std::filesystem::create_directories(files_.path() / "closed");
  ASSERT_EQ(chown((files_ / "closed").c_str(), 2001, 3001), 0);
  ASSERT_EQ(chmod((files_ / "closed").c_str(), 0700), 0);
  const std::pair<const char*, mode_t> names[] = {{"closed/one.txt", 0644},
                                                  {"closed/everybody's.txt", 0666}};
  for (const auto& [name, mode] : names) {
    write(name, "text");
    ASSERT_EQ(chown((files_ / name).c_str(), 2001, 3001), 0);
    ASSERT_EQ(chmod((files_ / name).c_str(), mode), 0);
  }
  std::filesystem::create_hard_link(files_ / "closed/everybody's.txt", files_ / "open.txt");
  extractor_->mostAtOnce = 2;
  run();
  EXPECT_FALSE((extractor_->origins[{2001, 0644}].contains(kOwnOrigin)));
  EXPECT_EQ((extractor_->origins[{2001, 0666}]), std::set{kOwnOrigin})
      << "others have written it, and read what is found in it";
}

TEST_F(ContentIndexing, FindsTheWordsOfTextFilesInAllFolders) {
  std::filesystem::create_directories(files_.path() / "deep/er");
  write("one.txt", "the budget");
  write("deep/er/two.txt", "my budget");
  write("picture.jpg", "no budget");
  const IndexingReport report = run();
  EXPECT_EQ(filesWith("budget"), (Names{"one.txt", "two.txt"}));
  ASSERT_TRUE(report.contents);
  EXPECT_EQ(report.contents->expected, 2U);
  EXPECT_EQ(report.contents->done, 2U);
  EXPECT_FALSE(report.contentError);
}

TEST_F(ContentIndexing, LooksAgainIntoWhatHasChangedAlone) {
  write("one.txt", "old");
  write("two.txt", "other");
  run();
  ASSERT_EQ(extractor_->looks, 2);
  run();
  EXPECT_EQ(extractor_->looks, 2);
  write("one.txt", "newer");
  run();
  EXPECT_EQ(extractor_->looks, 3);
  EXPECT_EQ(filesWith("old"), Names{});
  EXPECT_EQ(filesWith("newer"), Names{"one.txt"});
  EXPECT_EQ(filesWith("other"), Names{"two.txt"});
}

TEST_F(ContentIndexing, KnowsAFileByWhateverNameItHas) {
  write("one.txt", "words");
  run();
  std::filesystem::rename(files_ / "one.txt", files_ / "two.txt");
  std::filesystem::create_hard_link(files_ / "two.txt", files_ / "three.txt");
  run();
  EXPECT_EQ(extractor_->looks, 1);
  EXPECT_EQ(filesWith("words"), (Names{"three.txt", "two.txt"}));
}

TEST_F(ContentIndexing, LooksOnceIntoAFileWithSeveralNames) {
  write("one.txt", "words");
  std::filesystem::create_hard_link(files_ / "one.txt", files_ / "two.txt");
  run();
  EXPECT_EQ(extractor_->looks, 1);
  EXPECT_EQ(filesWith("words"), (Names{"one.txt", "two.txt"}));
}

TEST_F(ContentIndexing, LooksIntoAsManyFilesAtOnceAsItsExtractorDoes) {
  extractor_->mostAtOnce = 2;
  for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"}) write(name, "words");
  const IndexingReport report = run();
  EXPECT_EQ(report.contents->done, 5U);
  EXPECT_EQ(filesWith("words").size(), 5U);
  EXPECT_EQ(extractor_->mostUnderWay, 2);
  EXPECT_EQ(extractor_->underWay, 0);
}

TEST_F(ContentIndexing, LooksOnceIntoAFileThatIsUnderWayByAnotherName) {
  extractor_->mostAtOnce = 2;
  write("one.txt", "words");
  std::filesystem::create_hard_link(files_ / "one.txt", files_ / "two.txt");
  run();
  EXPECT_EQ(extractor_->looks, 1);
  EXPECT_EQ(filesWith("words"), (Names{"one.txt", "two.txt"}));
}

TEST_F(ContentIndexing, EndsWhileAFileTakesLong) {
  extractor_->mostAtOnce = 2;
  extractor_->isEverDone = false;
  for (const char* name : {"a.txt", "b.txt", "c.txt"}) write(name, "words");
  int told = 0;
  const auto ended = Indexer(index_->folder(), index_->lock(), types_, &*extractors_)
                         .run({std::filesystem::canonical(files_.path())},
                              [&](const IndexingProgress& p) { return !p.contents || ++told < 3; });
  ASSERT_TRUE(ended && *ended);
  EXPECT_EQ((*ended)->contents->done, 0U);
  EXPECT_EQ(extractor_->underWay, 0) << "those that it had begun are given up";
  extractor_->isEverDone = true;
  EXPECT_EQ(run().contents->done, 3U);
  EXPECT_EQ(filesWith("words").size(), 3U);
}

TEST_F(ContentIndexing, ForgetsWhatIsGone) {
  write("one.txt", "words");
  write("two.txt", "words");
  run();
  std::filesystem::remove(files_ / "one.txt");
  run();
  EXPECT_EQ(filesWith("words"), Names{"two.txt"});
  const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
  EXPECT_EQ(valueOrThrow(reader->counts()).contents, 1U);
}

TEST_F(ContentIndexing, RemembersTheFilesOfAFileSystemThatIsAway) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can mount";
  const std::string place = files_ / "volume";
  std::filesystem::create_directory(place);
  // Kept mounted elsewhere, so that it is the same one when it comes back.
  const TemporaryFolder kept;
  if (mount("none", kept.path().c_str(), "tmpfs", 0, "") != 0) GTEST_SKIP() << "mounts are refused";
  writeFile(kept / "one.txt", "words");
  const auto put = [&] { return mount(kept.path().c_str(), place.c_str(), nullptr, MS_BIND, ""); };
  EXPECT_EQ(put(), 0);
  run();
  EXPECT_EQ(umount(place.c_str()), 0);
  run();
  EXPECT_EQ(filesWith("words"), Names{});
  EXPECT_EQ(put(), 0);
  run();
  EXPECT_EQ(umount(place.c_str()), 0);
  EXPECT_EQ(umount(kept.path().c_str()), 0);
  EXPECT_EQ(filesWith("words"), Names{"one.txt"});
  EXPECT_EQ(extractor_->looks, 1);
}

TEST_F(ContentIndexing, LooksIntoAllAgainWithANewVersionOfTheExtractor) {
  write("one.txt", "words");
  run();
  extractor_->newVersion = 2;
  run();
  EXPECT_EQ(extractor_->looks, 2);
}

TEST_F(ContentIndexing, TriesAFailureAgainOnlyWhenItMayHaveGone) {
  struct Case {
    const char* what;
    ExtractionFailure::Kind kind;
    int looks;
  };
  const Case cases[] = {{"malformed", ExtractionFailure::Kind::kMalformed, 1},
                        {"crashed", ExtractionFailure::Kind::kCrashed, 1},
                        {"unavailable", ExtractionFailure::Kind::kUnavailable, 2},
                        {"unreadable", ExtractionFailure::Kind::kUnreadable, 2}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    write("one.txt", std::string("words of ") + c.what);
    extractor_->looks = 0;
    extractor_->failure = ExtractionFailure{c.kind, "it fails"};
    EXPECT_EQ(run().contents->failures, 1U);
    run();
    EXPECT_EQ(extractor_->looks, c.looks);
    const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
    const auto failures = valueOrThrow(reader->failures(5));
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_TRUE(failures[0].path.ends_with("/one.txt"));
    EXPECT_EQ(failures[0].failure->reason, "it fails");
  }
}

TEST_F(ContentIndexing, LeavesOutWhatVanishesMeanwhile) {
  write("one.txt", "words");
  write("two.txt", "words");
  extractor_->before = [&] {
    std::filesystem::remove(files_ / "one.txt");
    std::filesystem::remove(files_ / "two.txt");
  };
  const IndexingReport report = run();
  EXPECT_EQ(report.contents->vanished, 1U);
  EXPECT_EQ(report.contents->done, 2U);
}

TEST_F(ContentIndexing, GoesOnWhereItWasEnded) {
  write("one.txt", "words");
  run();
  write("two.txt", "words");
  const auto stopped = Indexer(index_->folder(), index_->lock(), types_, &*extractors_)
                           .run({std::filesystem::canonical(files_.path())},
                                [](const IndexingProgress& p) { return !p.contents; });
  ASSERT_TRUE(stopped);
  ASSERT_TRUE(*stopped);
  EXPECT_EQ((*stopped)->contents->expected, 1U);
  EXPECT_EQ((*stopped)->contents->done, 0U);
  EXPECT_EQ(filesWith("words"), Names{"one.txt"});
  EXPECT_EQ(run().contents->done, 1U);
  EXPECT_EQ(filesWith("words"), (Names{"one.txt", "two.txt"}));
}

TEST_F(ContentIndexing, MakesADamagedCatalogueAnew) {
  write("one.txt", "words");
  run();
  writeFile(index_->path() + "/" + kCatalogueName, std::string(20'000, 'x'));
  const IndexingReport report = run();
  ASSERT_TRUE(report.distrustedCatalogue);
  EXPECT_EQ(report.distrustedCatalogue->kind, StoreError::Kind::kDamaged);
  EXPECT_FALSE(report.contentError);
  EXPECT_EQ(filesWith("words"), Names{"one.txt"});
}

TEST_F(ContentIndexing, LeavesNamesToBeFoundWhenTheCatalogueCannotBe) {
  write("one.txt", "words");
  std::filesystem::create_directory(index_->path() + "/" + kCatalogueName);
  const IndexingReport report = run();
  ASSERT_TRUE(report.contentError);
  EXPECT_EQ(index_->generation().segment->columns().rowCount(), 1U);
}

TEST_F(ContentIndexing, LeavesACatalogueAloneWithoutExtractors) {
  write("one.txt", "words");
  run();
  const IndexingReport report = *valueOrThrow(
      Indexer(index_->folder(), index_->lock(), types_)
          .run({std::filesystem::canonical(files_.path())}, [](const auto&) { return true; }));
  EXPECT_FALSE(report.contents);
  EXPECT_THROW(filesWith("words"), std::runtime_error);
  run();
  EXPECT_EQ(extractor_->looks, 1);
  EXPECT_EQ(filesWith("words"), Names{"one.txt"});
}

}  // namespace
}  // namespace vt
