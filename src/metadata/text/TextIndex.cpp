#include "metadata/text/TextIndex.h"

#include <algorithm>
#include <optional>
#include <string>

#include "metadata/query/WordBoundaries.h"
#include "metadata/text/ContentTokenizer.h"

namespace vt {
namespace {

/// A place in a document, its number above.
using Place = std::uint64_t;

Place placeOf(std::uint64_t document, std::uint64_t place) { return document << 32 | place; }

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

Result<TextIndex, StoreError> TextIndex::of(const Database& database, std::size_t mostPlaces) {
  Result<Vocabulary, StoreError> vocabulary = Vocabulary::of(database);
  if (!vocabulary) return vocabulary.error();
  TextIndex index(database, std::move(vocabulary).value(), mostPlaces);
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
  return vocabulary_.isFull() ? vocabulary_.keep() : std::nullopt;
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
  std::vector<std::vector<FoundTerm>> terms;
  for (std::size_t i = 0; i < words.size(); ++i) {
    auto ofWord = termsOf(words[i], {.isFirst = i == 0, .isLast = i + 1 == words.size()});
    if (!ofWord) return ofWord.error();
    if (ofWord->empty()) return std::nullopt;
    terms.push_back(std::move(ofWord).value());
  }
  if (terms.size() == 1) {
    for (const FoundTerm& term : terms.front()) {
      if (StoreFailure failure = findPhrase({{term.term}}, found)) return failure;
    }
    return std::nullopt;
  }
  std::size_t count = found.size();
  for (std::size_t first = 0; first < found.size();) {
    const Result<bool, StoreError> isDone =
        findInOrder(terms, first, std::min(count, found.size() - first), found);
    if (!isDone) return isDone.error();
    if (*isDone) {
      first += std::min(count, found.size() - first);
    } else {
      count = (count + 1) / 2;
    }
  }
  return std::nullopt;
}

Result<bool, StoreError> TextIndex::findInOrder(const std::vector<std::vector<FoundTerm>>& words,
                                                std::size_t first, std::size_t count,
                                                Bitmap& found) {
  std::vector<Place> open;  // where the next word has to be, in order
  for (const std::vector<FoundTerm>& terms : words) {
    const bool isFirst = &terms == &words.front();
    const bool isLast = &terms == &words.back();
    std::vector<Place> next;
    for (const FoundTerm& term : terms) {
      findingPlaces_.restart().bind(1, term.term);
      while (findingPlaces_.next()) {
        const auto document = static_cast<std::uint64_t>(findingPlaces_.number(0));
        if (document < first || document - first >= count) continue;
        const auto at = placeOf(document, static_cast<std::uint64_t>(findingPlaces_.number(1)));
        if (!isFirst && !std::ranges::binary_search(open, at)) continue;
        if (isLast) {
          found.add(static_cast<std::size_t>(document));
        } else {
          next.push_back(at + term.length);
          if (next.size() > mostPlaces_ && count > 1) return false;
        }
      }
      if (StoreFailure failure = findingPlaces_.finish()) return *std::move(failure);
    }
    std::ranges::sort(next);
    open = std::move(next);
    if (open.empty()) break;
  }
  return true;
}

StoreFailure TextIndex::mergeAll() const {
  return database_->execute("INSERT INTO text(text) VALUES('optimize')");
}

StoreFailure TextIndex::check() const {
  return database_->execute("INSERT INTO text(text) VALUES('integrity-check')");
}

}  // namespace vt
