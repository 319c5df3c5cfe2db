#include "metadata/text/TextIndex.h"

#include <optional>
#include <string>

namespace vt {
namespace {

/// In the syntax of the table's queries. Terms are of letters and digits: none has a quote.
std::string matchOf(const TermPhrase& phrase) {
  std::string match = "\"";
  for (const std::string& term : phrase.terms) {
    if (match.size() > 1) match += ' ';
    match += term;
  }
  match += '"';
  if (phrase.endsInPrefix) match += " *";
  return match;
}

}  // namespace

std::string_view TextIndex::schema() {
  // Without sizes of texts, which are for ranking.
  return "CREATE VIRTUAL TABLE text USING fts5("
         "words, content='', columnsize=0, detail=full, tokenize='vistaro')";
}

Result<TextIndex, StoreError> TextIndex::of(const Database& database) {
  Result<Statement, StoreError> adding =
      database.prepare("INSERT INTO text(rowid, words) VALUES(?, ?)");
  if (!adding) return adding.error();
  Result<Statement, StoreError> finding =
      database.prepare("SELECT rowid FROM text WHERE text MATCH ?");
  if (!finding) return finding.error();
  return TextIndex(database, std::move(adding).value(), std::move(finding).value());
}

StoreFailure TextIndex::add(std::uint32_t number, std::string_view text) {
  return adding_.restart().bind(1, std::int64_t{number}).bind(2, text).run();
}

Result<Bitmap, StoreError> TextIndex::documents(const ContentQuery& question, std::size_t end) {
  std::optional<Bitmap> all;
  for (const std::vector<TermPhrase>& phrases : question.all) {
    Bitmap any(end);
    for (const TermPhrase& phrase : phrases) {
      if (StoreFailure failure = findPhrase(phrase, any)) return *std::move(failure);
    }
    if (all) {
      *all &= any;
    } else {
      all = std::move(any);
    }
  }
  return all ? *std::move(all) : Bitmap(end);
}

StoreFailure TextIndex::findPhrase(const TermPhrase& phrase, Bitmap& found) {
  const std::string match = matchOf(phrase);
  finding_.restart().bind(1, match);
  while (finding_.next()) {
    const std::int64_t document = finding_.number(0);
    if (document >= 0 && static_cast<std::size_t>(document) < found.size()) {
      found.add(static_cast<std::size_t>(document));
    }
  }
  return finding_.finish();
}

StoreFailure TextIndex::mergeAll() const {
  return database_->execute("INSERT INTO text(text) VALUES('optimize')");
}

StoreFailure TextIndex::check() const {
  return database_->execute("INSERT INTO text(text) VALUES('integrity-check')");
}

}  // namespace vt
