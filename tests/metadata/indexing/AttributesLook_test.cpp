#include "metadata/indexing/AttributesLook.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>

#include "foundation/Array.h"
#include "metadata/catalogue/CatalogueInFolder.h"
#include "metadata/extract/PlainTextExtractor.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

/// Looks into plain text, and counts; fails where there is none.
class CountingText final : public Extractor {
 public:
  explicit CountingText(const ContentTypes& types) : plain_(types) {}

  std::string_view name() const override { return "counting"; }
  std::uint32_t version() const override { return 1; }
  bool takes(ContentTypeId type) const override { return plain_.takes(type); }
  Result<Extraction, ExtractionFailure> extract(int file, ContentTypeId type) override {
    ++looks;
    Result<Extraction, ExtractionFailure> found = plain_.extract(file, type);
    if (found->text->empty()) return ExtractionFailure{};
    return found;
  }

  int looks = 0;

 private:
  PlainTextExtractor plain_;
};

class AttributesLookTest : public testing::Test {
 protected:
  AttributesLookTest() {
    auto owned = std::make_unique<CountingText>(types_);
    extractor_ = owned.get();
    std::vector<std::unique_ptr<Extractor>> list;
    list.push_back(std::move(owned));
    extractors_.emplace(types_, std::move(list));
    index_.emplace(types_, &*extractors_);
  }

  std::string at(const char* name) const { return files_ / name; }
  void write(const char* name, const char* text = "words") { writeFile(at(name), text); }
  void tag(const char* name, std::string_view tags) {
    ASSERT_EQ(::setxattr(at(name).c_str(), "user.xdg.tags", tags.data(), tags.size(), 0), 0);
  }
  IndexingReport run() { return index_->run({std::filesystem::canonical(files_.path())}); }

  /// "name: tag, tag" of each file that has tags, in the order of names.
  std::vector<std::string> tags() {
    const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
    throwIf(reader->lookAnew());
    std::vector<std::string> lines;
    forEachRow(*reader, [&](std::string_view name, ContentNumber content) {
      const Value value = valueOrThrow(reader->attribute(content, "kMDItemUserTags"));
      if (value.isNull()) return;
      std::string line(name);
      for (const Value& element : *value.array()) line += " " + *element.get<std::string>();
      lines.push_back(std::move(line));
    });
    std::ranges::sort(lines);
    return lines;
  }

  /// How many files have the words.
  std::size_t filesWith(const std::string& words) {
    const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
    throwIf(reader->lookAnew());
    const Bitmap found =
        valueOrThrow(reader->withWords(contentQueryOf(words, 0), valueOrThrow(reader->end())));
    std::size_t count = 0;
    forEachRow(*reader, [&](std::string_view, ContentNumber content) {
      if (content < found.size() && found.contains(content)) ++count;
    });
    return count;
  }

  template <class Visit>
  void forEachRow(CatalogueReader& reader, Visit visit) {
    const IndexGeneration generation = index_->generation();
    const SegmentColumns& segment = generation.segment->columns();
    const auto rows =
        valueOrThrow(reader.rowsOf(generation.segment->identity(), segment.rowCount()));
    if (!rows) throw std::runtime_error("nothing is said of the rows");
    for (std::size_t row = 0; row < rows->size(); ++row) visit(segment.name(row), (*rows)[row]);
  }

  using Lines = std::vector<std::string>;

  const ContentTypes types_ = shippedTypes();
  TemporaryFolder files_;
  CountingText* extractor_ = nullptr;
  std::optional<Extractors> extractors_;
  std::optional<IndexedTree> index_;
};

TEST_F(AttributesLookTest, FindsTagsOfFilesThatSomebodyOrNobodyLooksInto) {
  std::filesystem::create_directories(files_.path() / "deep/er");
  for (const char* name : {"text.txt", "picture.jpg", "deep/er/data", "plain.bin"}) write(name);
  tag("text.txt", "one");
  tag("picture.jpg", "two,three");
  tag("deep/er/data", "four");
  const std::string before = std::filesystem::current_path();
  run();
  EXPECT_EQ(tags(), (Lines{"data four", "picture.jpg two three", "text.txt one"}));
  EXPECT_EQ(std::filesystem::current_path(), before);
  const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
  EXPECT_EQ(valueOrThrow(reader->counts()).contents, 3U);
}

TEST_F(AttributesLookTest, FollowsTagsWithoutLookingIntoTheFileAgain) {
  for (const char* name : {"text.txt", "picture.jpg", "later.txt", "later.jpg"}) write(name);
  tag("text.txt", "old");
  tag("picture.jpg", "old");
  run();
  ASSERT_EQ(extractor_->looks, 2);
  for (const char* name : {"text.txt", "picture.jpg", "later.txt", "later.jpg"}) tag(name, "new");
  run();
  EXPECT_EQ(tags(), (Lines{"later.jpg new", "later.txt new", "picture.jpg new", "text.txt new"}));
  ::removexattr(at("text.txt").c_str(), "user.xdg.tags");
  ::removexattr(at("picture.jpg").c_str(), "user.xdg.tags");
  run();
  EXPECT_EQ(tags(), (Lines{"later.jpg new", "later.txt new"}));
  EXPECT_EQ(extractor_->looks, 2);
  EXPECT_EQ(filesWith("words"), 2U);
}

TEST_F(AttributesLookTest, LooksIntoNothingAgainWhenOnlyRightsHaveChanged) {
  write("text.txt");
  write("picture.jpg");
  tag("text.txt", "one");
  tag("picture.jpg", "two");
  run();
  ::chmod(at("text.txt").c_str(), 0600);
  ::chmod(at("picture.jpg").c_str(), 0600);
  run();
  EXPECT_EQ(extractor_->looks, 1);
  EXPECT_EQ(tags(), (Lines{"picture.jpg two", "text.txt one"}));
}

TEST_F(AttributesLookTest, KeepsTagsWhenTheContentChanges) {
  write("text.txt", "old words");
  tag("text.txt", "one");
  run();
  write("text.txt", "other words, and more of them");
  run();
  EXPECT_EQ(tags(), Lines{"text.txt one"});
  EXPECT_EQ(filesWith("more"), 1U);
}

TEST_F(AttributesLookTest, TellsTheTagsOfAFileByEachOfItsNames) {
  write("one.jpg");
  std::filesystem::create_hard_link(at("one.jpg"), at("two.jpg"));
  tag("one.jpg", "both");
  run();
  EXPECT_EQ(tags(), (Lines{"one.jpg both", "two.jpg both"}));
  run();
  EXPECT_EQ(tags(), (Lines{"one.jpg both", "two.jpg both"}));
}

TEST_F(AttributesLookTest, TellsTagsOfAFileInWhichNothingWasFound) {
  write("empty.txt", "");
  tag("empty.txt", "one");
  EXPECT_EQ(run().contents->failures, 1U);
  EXPECT_EQ(tags(), Lines{"empty.txt one"});
}

TEST_F(AttributesLookTest, FollowsAFileToANameThatSomebodyLooksInto) {
  write("file.bin");
  tag("file.bin", "one");
  run();
  std::filesystem::rename(at("file.bin"), at("file.txt"));
  run();
  EXPECT_EQ(tags(), Lines{"file.txt one"});
  EXPECT_EQ(filesWith("words"), 1U);
  std::filesystem::rename(at("file.txt"), at("file.bin"));
  run();
  EXPECT_EQ(tags(), Lines{"file.bin one"});
  EXPECT_EQ(filesWith("words"), 0U);
  const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
  EXPECT_EQ(valueOrThrow(reader->counts()).contents, 1U);
}

TEST_F(AttributesLookTest, ForgetsTagsOfWhatIsGone) {
  write("picture.jpg");
  write("stays.bin");  // or the whole file system could be away
  tag("picture.jpg", "one");
  run();
  std::filesystem::remove(at("picture.jpg"));
  run();
  EXPECT_EQ(tags(), Lines{});
  const auto reader = valueOrThrow(CatalogueReader::open(index_->path()));
  EXPECT_EQ(valueOrThrow(reader->counts()).contents, 0U);
}

TEST_F(AttributesLookTest, TouchesNothingThatIsNoFile) {
  ASSERT_EQ(::mkfifo(at("pipe.jpg").c_str(), 0600), 0);
  std::filesystem::create_symlink("/etc/hostname", at("link.jpg"));
  run();
  EXPECT_EQ(tags(), Lines{});
}

}  // namespace
}  // namespace vt
