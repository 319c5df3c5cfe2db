#include "metadata/text/TextIndex.h"

#include <algorithm>
#include <optional>
#include <string>

#include "metadata/query/WordBoundaries.h"
#include "metadata/text/ContentTokenizer.h"

namespace vt {
namespace {

/// A document, and a place in it.
using Place = std::pair<std::int64_t, std::int64_t>;

bool isBelow(std::int64_t document, std::size_t end) {
  return document >= 0 && static_cast<std::size_t>(document) < end;
}

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

std::string TextIndex::schema() {
  // Without sizes of texts, which are for ranking.
  return "CREATE VIRTUAL TABLE text USING fts5("
         "words, content='', columnsize=0, detail=full, tokenize='vistaro');"
         "CREATE VIRTUAL TABLE text_place USING fts5vocab(text, instance);" +
         std::string(Vocabulary::schema());
}

Result<TextIndex, StoreError> TextIndex::of(const Database& database) {
  Result<Vocabulary, StoreError> vocabulary = Vocabulary::of(database);
  if (!vocabulary) return vocabulary.error();
  TextIndex index(database, std::move(vocabulary).value());
  StoreFailure refusal = database.prepareAll({
      {&index.adding_, "INSERT INTO text(rowid, words) VALUES(?, ?)"},
      {&index.finding_, "SELECT rowid FROM text WHERE text MATCH ?"},
      {&index.findingPlaces_, "SELECT doc, offset FROM text_place WHERE term = ?"},
  });
  if (refusal) return *std::move(refusal);
  return index;
}

StoreFailure TextIndex::add(std::uint32_t number, std::string_view text) {
  const std::string tokens = tokenText(query::segmentContent(text),
                                       [&](const ContentTerm& term) { vocabulary_.note(term); });
  if (StoreFailure failure =
          adding_.restart().bind(1, std::int64_t{number}).bind(2, tokens).run()) {
    return failure;
  }
  return vocabulary_.keep();
}

Result<Bitmap, StoreError> TextIndex::documents(const ContentQuery& question, std::size_t end) {
  std::optional<Bitmap> all;
  for (const ContentElement& element : question.all) {
    Bitmap found(end);
    if (StoreFailure failure = findElement(element, found)) return *std::move(failure);
    if (all) {
      *all &= found;
    } else {
      all = std::move(found);
    }
  }
  return all ? *std::move(all) : Bitmap(end);
}

StoreFailure TextIndex::findElement(const ContentElement& element, Bitmap& found) {
  if (!element.pattern.empty()) return findPattern(element.pattern, found);
  for (const TermPhrase& phrase : element.phrases) {
    if (StoreFailure failure = findPhrase(phrase, found)) return failure;
  }
  return std::nullopt;
}

StoreFailure TextIndex::findPhrase(const TermPhrase& phrase, Bitmap& found) {
  const std::string match = matchOf(phrase);
  finding_.restart().bind(1, match);
  while (finding_.next()) {
    const std::int64_t document = finding_.number(0);
    if (isBelow(document, found.size())) {
      found.add(static_cast<std::size_t>(document));
    }
  }
  return finding_.finish();
}

Result<std::vector<TextIndex::FoundTerm>, StoreError> TextIndex::termsOf(
    const query::PatternWord& word, PlaceInPhrase place) {
  const PatternTerms pattern(word, place);
  std::vector<FoundTerm> found;
  for (const std::string& prefix : pattern.prefixes()) {
    StoreFailure failure = vocabulary_.forEach(prefix, [&](const KnownTerm& term) {
      if (!pattern.matches(term)) return;
      found.push_back({std::string(term.term), PatternTerms::lengthOf(term)});
    });
    if (failure) return *std::move(failure);
  }
  return found;
}

StoreFailure TextIndex::findPattern(const std::vector<query::PatternWord>& words, Bitmap& found) {
  std::vector<Place> open;  // where the next word has to be, in order
  for (std::size_t i = 0; i < words.size(); ++i) {
    const PlaceInPhrase place{.isFirst = i == 0, .isLast = i + 1 == words.size()};
    const Result<std::vector<FoundTerm>, StoreError> terms = termsOf(words[i], place);
    if (!terms) return terms.error();
    std::vector<Place> next;
    for (const FoundTerm& term : *terms) {
      if (place.isFirst && place.isLast) {
        if (StoreFailure failure = findPhrase({{term.term}}, found)) return failure;
        continue;
      }
      findingPlaces_.restart().bind(1, term.term);
      while (findingPlaces_.next()) {
        const Place at(findingPlaces_.number(0), findingPlaces_.number(1));
        if (!isBelow(at.first, found.size())) continue;
        if (!place.isFirst && !std::ranges::binary_search(open, at)) continue;
        if (place.isLast) {
          found.add(static_cast<std::size_t>(at.first));
        } else {
          next.emplace_back(at.first, at.second + static_cast<std::int64_t>(term.length));
        }
      }
      if (StoreFailure failure = findingPlaces_.finish()) return failure;
    }
    std::ranges::sort(next);
    open = std::move(next);
    if (open.empty()) break;
  }
  return std::nullopt;
}

StoreFailure TextIndex::mergeAll() const {
  return database_->execute("INSERT INTO text(text) VALUES('optimize')");
}

StoreFailure TextIndex::check() const {
  return database_->execute("INSERT INTO text(text) VALUES('integrity-check')");
}

}  // namespace vt
