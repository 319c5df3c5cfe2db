#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Result.h"
#include "metadata/database/Database.h"
#include "metadata/store/Bitmap.h"
#include "metadata/text/ContentQuery.h"
#include "metadata/text/PatternTerms.h"
#include "metadata/text/Vocabulary.h"

namespace vt {

/// Which words are in which documents: a full-text table of a database that keeps no text. A
/// document is a number; its text never changes and is never taken out, so a text that changed is
/// another document, and who no longer wants one leaves it out of what is found.
class TextIndex {
 public:
  /// The statements that make its tables.
  static std::string schema();

  /// So many places of words are held at a time: 64 MiB.
  static constexpr std::size_t kMostPlaces = std::size_t{8} << 20;

  /// Of a database with the tables and the tokenizer; borrows it. With fewer places held at a time,
  /// phrases with patterns take longer: documents are then looked at in several rounds.
  static Result<TextIndex, StoreError> of(const Database& database,
                                          std::size_t mostPlaces = kMostPlaces);

  /// Adds a document. `number` is above those of all others; `text` is UTF-8.
  StoreFailure add(std::uint32_t number, std::string_view text);
  /// To be called before what was added is committed: patterns then find it. What is undone after
  /// that makes this object unfit to add more.
  StoreFailure finishAdding() { return vocabulary_.keep(); }

  /// The documents below `end` whose text is as the question asks.
  Result<Bitmap, StoreError> documents(const ContentQuery& question, std::size_t end);

  /// Makes one of the pieces that additions leave. Worth it after many small ones; large ones leave
  /// so few that only beginnings of words with many ends are found quicker, by a third.
  StoreFailure mergeAll() const;
  /// Looks through the whole table for contradictions.
  StoreFailure check() const;

 private:
  TextIndex(const Database& database, Vocabulary vocabulary, std::size_t mostPlaces)
      : database_(&database), mostPlaces_(mostPlaces), vocabulary_(std::move(vocabulary)) {}

  /// A term that a word of a pattern may be, and how many places it takes.
  struct FoundTerm {
    std::string term;
    std::size_t length;
  };

  // What is found is added to `found`.
  StoreFailure findElement(const ContentElement& element, Bitmap& found);
  StoreFailure findPhrase(const TermPhrase& phrase, Bitmap& found);
  StoreFailure findPattern(const std::vector<query::PatternWord>& words, Bitmap& found);
  /// Among `count` documents from `first` on, those in which a term of each word follows one of the
  /// word before. False when these have too many places to hold them.
  Result<bool, StoreError> findInOrder(const std::vector<std::vector<FoundTerm>>& words,
                                       std::size_t first, std::size_t count, Bitmap& found);
  Result<std::vector<FoundTerm>, StoreError> termsOf(const query::PatternWord& word,
                                                     PlaceInPhrase place);

  const Database* database_;
  std::size_t mostPlaces_;
  Vocabulary vocabulary_;
  Statement adding_;
  Statement finding_;
  Statement findingPlaces_;
};

}  // namespace vt
