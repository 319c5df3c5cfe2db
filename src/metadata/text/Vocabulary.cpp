#include "metadata/text/Vocabulary.h"

#include <algorithm>
#include <utility>

namespace vt {
namespace {

bool isWhole(const ContentTerm& term) { return term.text.size() <= kLongestTermText; }

}  // namespace

std::string_view Vocabulary::schema() {
  return "CREATE TABLE word(term TEXT PRIMARY KEY, whole TEXT) WITHOUT ROWID";
}

Result<Vocabulary, StoreError> Vocabulary::of(const Database& database) {
  Statement adding;
  Statement finding;
  StoreFailure refusal = database.prepareAll({
      {&adding, "INSERT OR IGNORE INTO word(term, whole) VALUES(?, ?)"},
      {&finding, "SELECT term, whole FROM word WHERE term >= ? AND term < ?"},
  });
  if (refusal) return *std::move(refusal);
  return Vocabulary(std::move(adding), std::move(finding));
}

Vocabulary::Vocabulary(Statement adding, Statement finding)
    : adding_(std::move(adding)), finding_(std::move(finding)) {}

void Vocabulary::note(const ContentTerm& term) {
  const TermKind kind = term.kind();
  if (kind == TermKind::kIdeographPair) return;
  if (!isWhole(term) && kind != TermKind::kCompound) return;
  known_.insert(term.term, [&](std::string_view added) {
    // Of those that are told of later the term has all.
    add(added, isWhole(term) ? std::string_view() : term.text);
  });
}

void Vocabulary::add(std::string_view term, std::string_view text) {
  new_.push_back({std::string(term), std::string(text)});
  newBytes_ += sizeof(NewTerm) + term.size() + text.size();
}

StoreFailure Vocabulary::keep() {
  known_.finish([&](std::string_view added) { add(added, {}); });
  // In the order of the table, whose pages are then each looked for once.
  std::ranges::sort(new_, {}, &NewTerm::term);
  for (const NewTerm& added : new_) {
    adding_.restart().bind(1, added.term);
    if (added.text.empty()) {
      adding_.bindNull(2);
    } else {
      adding_.bind(2, added.text);
    }
    if (StoreFailure failure = adding_.run()) return failure;
  }
  new_.clear();
  newBytes_ = 0;
  return std::nullopt;
}

StoreFailure Vocabulary::forEach(std::string_view prefix,
                                 FunctionRef<void(const KnownTerm& term)> visit) {
  std::string end(prefix);
  ++end.back();  // no byte of UTF-8 is the last one
  finding_.restart().bind(1, prefix).bind(2, end);
  while (finding_.next()) {
    const std::string_view term = finding_.bytes(0);
    // Damage may have left anything there.
    if (term.size() < 2) continue;
    visit({term, finding_.isNull(1) ? term.substr(1) : finding_.bytes(1)});
  }
  return finding_.finish();
}

}  // namespace vt
