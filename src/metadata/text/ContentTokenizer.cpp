#include "metadata/text/ContentTokenizer.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "metadata/database/SQLite.h"

namespace vt {
namespace {

using TakeToken = int (*)(void* context, int flags, const char* token, int bytes, int begin,
                          int end);

// Before a term at a place of its own, and before one at the place of the term before it. Neither
// is in a term.
constexpr char kNewPlace = ' ';
constexpr char kSamePlace = '\t';

/// How many bytes there are before the first of the two.
std::size_t lengthOfFirst(std::string_view terms) {
  const auto* const end = std::ranges::find_if(
      terms, [](char unit) { return unit == kNewPlace || unit == kSamePlace; });
  return static_cast<std::size_t>(end - terms.begin());
}

int takeTerms(std::string_view terms, void* context, TakeToken take) {
  while (!terms.empty()) {
    const bool isColocated = terms.front() == kSamePlace;
    if (isColocated || terms.front() == kNewPlace) terms.remove_prefix(1);
    const std::string_view term = terms.substr(0, lengthOfFirst(terms));
    // Offsets in the text would be for showing what was found in it, which is not kept.
    const int code = take(context, isColocated ? FTS5_TOKEN_COLOCATED : 0, term.data(),
                          static_cast<int>(term.size()), 0, 0);
    if (code != SQLITE_OK) return code;
    terms.remove_prefix(term.size());
  }
  return SQLITE_OK;
}

// What SQLite calls. There is nothing to hold in a tokenizer, but it wants one with an address.
int makeTokenizer(void* /*context*/, const char** /*arguments*/, int /*count*/,
                  Fts5Tokenizer** made) {
  static char nothing = 0;
  *made = reinterpret_cast<Fts5Tokenizer*>(&nothing);
  return SQLITE_OK;
}

void dropTokenizer(Fts5Tokenizer* /*tokenizer*/) {}

int tokenize(Fts5Tokenizer* /*tokenizer*/, void* context, int /*flags*/, const char* bytes,
             int count, TakeToken take) {
  return takeTerms({count > 0 ? bytes : "", static_cast<std::size_t>(count)}, context, take);
}

}  // namespace

std::string tokenText(const query::SegmentedText& content,
                      FunctionRef<void(const ContentTerm& term)> see) {
  std::string text;
  text.reserve(2 * content.units.size());
  forEachTerm(content, [&](const ContentTerm& term) {
    text += term.isAtNewPlace ? kNewPlace : kSamePlace;
    text += term.term;
    see(term);
    return true;
  });
  return text;
}

StoreFailure addContentTokenizer(const Database& database) {
  sqlite3_stmt* statement = nullptr;
  fts5_api* api = nullptr;
  // The way that SQLite gives its interface for tokenizers.
  int code =
      sqlite().sqlite3_prepare_v2(database.handle(), "SELECT fts5(?1)", -1, &statement, nullptr);
  if (code == SQLITE_OK) {
    sqlite().sqlite3_bind_pointer(statement, 1, static_cast<void*>(&api), "fts5_api_ptr", nullptr);
    sqlite().sqlite3_step(statement);
  }
  sqlite().sqlite3_finalize(statement);
  if (api == nullptr) {
    return databaseError(code == SQLITE_OK ? SQLITE_ERROR : code,
                         code == SQLITE_OK ? "this SQLite has no full-text search"
                                           : sqlite().sqlite3_errmsg(database.handle()),
                         database.path());
  }
  fts5_tokenizer tokenizer{makeTokenizer, dropTokenizer, tokenize};
  code = api->xCreateTokenizer(api, kContentTokenizer, nullptr, &tokenizer, nullptr);
  if (code != SQLITE_OK) return databaseError(code, sqlite().sqlite3_errstr(code), database.path());
  return std::nullopt;
}

}  // namespace vt
