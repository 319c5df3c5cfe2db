#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/database/Database.h"
#include "metadata/text/ContentTerms.h"
#include "metadata/text/TermSet.h"

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

  /// Notes a term, to be kept by the next keep(). Most terms are known from before, and cost next
  /// to nothing.
  void note(const ContentTerm& term);
  /// Whether so many terms are noted that they should be kept: some MiB.
  bool isFull() const { return newBytes_ >= kMostNewBytes; }
  /// Keeps what was noted. It has to be committed: what was kept and is undone is not kept again.
  StoreFailure keep();

  /// Visits the terms that begin with `prefix`, which is not empty, in order.
  StoreFailure forEach(std::string_view prefix, FunctionRef<void(const KnownTerm& term)> visit);

 private:
  struct NewTerm {
    std::string term;
    std::string text;  // "" where the term has it all
  };

  static constexpr std::size_t kMostNewBytes = std::size_t{8} << 20;

  Vocabulary(Statement adding, Statement finding);
  void add(std::string_view term, std::string_view text);

  Statement adding_;
  Statement finding_;
  TermSet known_;  // of what is kept or noted
  std::vector<NewTerm> new_;
  std::size_t newBytes_ = 0;
};

}  // namespace vt
