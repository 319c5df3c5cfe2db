#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/database/Database.h"
#include "metadata/text/ContentTerms.h"

namespace vt {

/// A term of a vocabulary. The bytes are borrowed.
struct KnownTerm {
  std::string_view term;
  std::string_view text;  ///< whole, however long
};

/// The terms that a text index has, in order, so that patterns are put to each term once and not to
/// each content. Pairs of ideographs are not in it, nor what is too long for its term, except
/// compounds.
class Vocabulary {
 public:
  /// The statement that makes the table.
  static std::string_view schema();

  /// Of a database with the table; borrows it.
  static Result<Vocabulary, StoreError> of(const Database& database);

  /// Notes a term, to be kept by the next keep(). Most terms are known from just before, and cost
  /// next to nothing.
  void note(const ContentTerm& term);
  StoreFailure keep();

  /// Visits the terms that begin with `prefix`, which is not empty, in order.
  StoreFailure forEach(std::string_view prefix, FunctionRef<void(const KnownTerm& term)> visit);

 private:
  struct NewTerm {
    std::string term;
    std::string text;  // "" where the term has it all
  };

  Vocabulary(Statement adding, Statement finding);

  Statement adding_;
  Statement finding_;
  std::vector<std::string> kept_;  // terms that surely are kept, each at the place of its hash
  std::vector<NewTerm> new_;
};

}  // namespace vt
