// Would files of our own, which never change, answer words better than FTS5 does? A prototype of
// such a file and the table that the catalogue has are made of the plain texts of one tree and
// asked the same, in one run; both must give the same documents.
//
//   text_segment_bench FOLDER   that script/bench-corpus has printed, of files with content

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "ProgramRun.h"
#include "Report.h"
#include "metadata/extract/PlainTextExtractor.h"
#include "metadata/query/WordBoundaries.h"
#include "metadata/text/ContentTokenizer.h"
#include "metadata/text/TextIndex.h"
#include "metadata/types/ShippedTypes.h"
#include "prototypes/TextSegment.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr int kRounds = 7;
// So many documents between two commits, as the indexer does in about three seconds.
constexpr std::size_t kDocumentsOfABatch = 6000;

void refuse(const StoreFailure& failure) {
  if (failure) throw std::runtime_error(failure->reason);
}

template <class Value, class Error>
Value valueOf(Result<Value, Error> result) {
  if (!result) throw std::runtime_error(result.error().reason);
  return std::move(result).value();
}

std::vector<std::string> textsBelow(const std::filesystem::path& tree) {
  const ContentTypes types = shippedTypes();
  PlainTextExtractor extractor(types);
  std::vector<std::string> texts;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(tree)) {
    if (!entry.is_regular_file() || entry.is_symlink()) continue;
    const ContentTypeId type = types.typeOfFile(entry.path().filename().string());
    if (!extractor.takes(type)) continue;
    const int file = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) continue;
    Result<Extraction, ExtractionFailure> found = extractor.extract(file, type);
    ::close(file);
    if (found && found->text) texts.push_back(*std::move(found->text));
  }
  return texts;
}

/// The table as in a catalogue, with its settings.
Database madeTable(const std::string& path, const std::vector<std::string>& texts) {
  Database database = valueOf(Database::openForWriting(path));
  for (const char* setting : {"PRAGMA page_size = 8192", "PRAGMA journal_mode = WAL",
                              "PRAGMA synchronous = FULL", "PRAGMA cache_size = -16384"}) {
    refuse(database.execute(setting));
  }
  refuse(addContentTokenizer(database));
  refuse(database.execute(TextIndex::schema().c_str()));
  refuse(
      database.execute("INSERT INTO text(text, rank) VALUES('pgsz', 8100);"
                       "INSERT INTO text(text, rank) VALUES('hashsize', 16777216)"));
  TextIndex index = valueOf(TextIndex::of(database));
  for (std::size_t first = 0; first < texts.size(); first += kDocumentsOfABatch) {
    Transaction batch(database);
    const std::size_t end = std::min(texts.size(), first + kDocumentsOfABatch);
    for (std::size_t i = first; i < end; ++i) {
      refuse(index.add(static_cast<std::uint32_t>(i), texts[i]));
    }
    refuse(index.finishAdding());
    refuse(batch.commit());
  }
  Transaction merging(database);
  refuse(index.mergeAll());
  refuse(merging.commit());
  refuse(database.execute("PRAGMA wal_checkpoint(TRUNCATE)"));
  return database;
}

struct Question {
  const char* name;
  std::string pattern;
};

/// The word and the one that follows it in the first text that has it so.
std::string phraseIn(const std::vector<std::string>& texts, const std::string& word) {
  for (const std::string& text : texts) {
    const std::string units = query::segmentContent(text).units;
    const std::size_t at = units.find(" " + word + " ");
    if (at == std::string::npos) continue;
    const std::size_t next = at + word.size() + 2;
    return word + " " + units.substr(next, units.find(' ', next) - next);
  }
  throw std::runtime_error("no text has " + word);
}

/// Of words that the summary of the tree names.
std::vector<Question> questionsOf(const std::filesystem::path& folder,
                                  const std::vector<std::string>& texts) {
  const auto summary = nlohmann::json::parse(std::ifstream(folder / "summary.json"));
  const auto word = [&](const char* frequency) -> std::string {
    return summary.at("content_words").at(frequency).at(1).at("word");
  };
  const std::string common = word("common");
  const std::string medium = word("medium");
  const std::string prefix = summary.at("content_prefixes").back().at("prefix");
  return {{"RareWord", word("rare")},
          {"MediumWord", medium},
          {"CommonWord", common},
          {"BeginningOfThreeLetters", prefix.substr(0, 3) + "*"},
          {"EndOfWords", "*" + medium.substr(medium.size() - 3)},
          {"WithinWords", "*" + prefix.substr(1, 3) + "*"},
          {"OneLetterWithinWords", "*" + prefix.substr(0, 1) + "*"},
          {"BeginningAndEnd", common.substr(0, 2) + "*" + common.substr(common.size() - 1)},
          {"PhraseThatIsNowhere", common + " " + medium},
          {"Phrase", phraseIn(texts, common)},
          {"PhraseOfPatterns", "*" + phraseIn(texts, common).substr(1) + "*"}};
}

int run(const std::filesystem::path& folder) {
  const std::vector<std::string> texts = textsBelow(folder / "tree");
  std::size_t bytes = 0;
  for (const std::string& text : texts) bytes += text.size();
  fmt::print("{} texts of {} bytes\n", texts.size(), bytes);
  const TemporaryFolder place;

  std::optional<Database> database;
  const double tableSeconds = secondsOf([&] { database = madeTable(place / "table", texts); });
  const double segmentSeconds = secondsOf([&] {
    TextSegmentBuilder builder;
    for (std::size_t i = 0; i < texts.size(); ++i) {
      builder.add(static_cast<std::uint32_t>(i), texts[i]);
    }
    builder.write(place / "segment");
  });
  TextIndex table = valueOf(TextIndex::of(*database));
  const TextSegment segment(place.path(), "segment", texts.size());
  const auto mebibytes = [](std::size_t count) { return static_cast<double>(count) / (1 << 20); };
  printFigure("Making", segmentSeconds, "s", "FTS5", tableSeconds);
  printFigure("Size", mebibytes(segment.sizeInBytes()), "MiB", "FTS5",
              mebibytes(std::filesystem::file_size(place / "table")));
  fmt::print("{:<40} {:>9.2f} MiB\n", "OfThisPlaces", mebibytes(segment.sizeOfPlaces()));

  for (const auto& [name, pattern] : questionsOf(folder, texts)) {
    const ContentQuery question = contentQueryOf(pattern, 0);
    Bitmap byTable(0);
    Bitmap bySegment(0);
    const double tableMillis =
        1000 * bestOf(kRounds, [&] {
          return secondsOf([&] { byTable = valueOf(table.documents(question, texts.size())); });
        });
    const double segmentMillis =
        1000 * bestOf(kRounds, [&] {
          return secondsOf(
              [&] { bySegment = Bitmap(texts.size(), segment.documents(question).words()); });
        });
    if (byTable != bySegment) {
      fmt::print(stderr, "{}: {} and {} documents for {}\n", name, byTable.count(),
                 bySegment.count(), pattern);
      return 1;
    }
    printFigure(fmt::format("{} ({})", name, byTable.count()), segmentMillis, "ms", "FTS5",
                tableMillis);
  }
  return 0;
}

}  // namespace
}  // namespace vt

int main(int argc, char** argv) {
  if (argc < 2) {
    fmt::print(stderr, "usage: text_segment_bench FOLDER\n");
    return 2;
  }
  return vt::run(argv[1]);
}
