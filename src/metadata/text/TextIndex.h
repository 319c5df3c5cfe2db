#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "foundation/Result.h"
#include "metadata/database/Database.h"
#include "metadata/store/Bitmap.h"
#include "metadata/text/ContentQuery.h"

namespace vt {

/// Which words are in which documents: a full-text table of a database that keeps no text. A
/// document is a number; its text never changes and is never taken out, so a text that changed is
/// another document, and who no longer wants one leaves it out of what is found.
class TextIndex {
 public:
  /// The statement that makes the table.
  static std::string_view schema();

  /// Of a database with the table and the tokenizer; borrows it.
  static Result<TextIndex, StoreError> of(const Database& database);

  /// Adds a document. `number` is above those of all others; `text` is UTF-8.
  StoreFailure add(std::uint32_t number, std::string_view text);

  /// The documents below `end` whose text is as the question asks.
  Result<Bitmap, StoreError> documents(const ContentQuery& question, std::size_t end);

  /// Makes one of the many pieces that additions leave: searches are then quicker by half, and the
  /// file smaller. Takes about as long as the additions did.
  StoreFailure mergeAll() const;
  /// Looks through the whole table for contradictions.
  StoreFailure check() const;

 private:
  TextIndex(const Database& database, Statement adding, Statement finding)
      : database_(&database), adding_(std::move(adding)), finding_(std::move(finding)) {}

  StoreFailure findPhrase(const TermPhrase& phrase, Bitmap& found);

  const Database* database_;
  Statement adding_;
  Statement finding_;
};

}  // namespace vt
