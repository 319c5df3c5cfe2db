#include "metadata/text/ContentTokenizer.h"

#include <new>
#include <string_view>

#include "metadata/database/SQLite.h"
#include "metadata/query/WordBoundaries.h"
#include "metadata/text/ContentTerms.h"

namespace vt {
namespace {

using TakeToken = int (*)(void* context, int flags, const char* token, int bytes, int begin,
                          int end);

int takeTerms(std::string_view text, void* context, TakeToken take) {
  int code = SQLITE_OK;
  // Offsets in the text would be for showing what was found in it, which is not kept.
  forEachTerm(query::segmentContent(text), [&](std::string_view term, bool isFirst) {
    code = take(context, isFirst ? 0 : FTS5_TOKEN_COLOCATED, term.data(),
                static_cast<int>(term.size()), 0, 0);
    return code == SQLITE_OK;
  });
  return code;
}

int takePhrase(std::string_view phrase, void* context, TakeToken take) {
  while (!phrase.empty()) {
    const std::string_view term = phrase.substr(0, phrase.find(' '));
    const int code = take(context, 0, term.data(), static_cast<int>(term.size()), 0, 0);
    if (code != SQLITE_OK) return code;
    phrase.remove_prefix(term.size() < phrase.size() ? term.size() + 1 : term.size());
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

int tokenize(Fts5Tokenizer* /*tokenizer*/, void* context, int flags, const char* bytes, int count,
             TakeToken take) {
  const std::string_view text(count > 0 ? bytes : "", static_cast<std::size_t>(count));
  try {
    return (flags & FTS5_TOKENIZE_QUERY) != 0 ? takePhrase(text, context, take)
                                              : takeTerms(text, context, take);
  } catch (const std::bad_alloc&) {
    return SQLITE_NOMEM;  // no exception may pass through SQLite
  }
}

}  // namespace

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
