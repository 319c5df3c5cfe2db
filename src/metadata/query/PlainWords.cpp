#include "metadata/query/PlainWords.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

#include "metadata/query/QueryLexer.h"
#include "metadata/query/QueryParser.h"
#include "metadata/query/QuerySemantics.h"
#include "metadata/query/SearchTerms.h"

namespace vt::query {
namespace {

// Where words begin with what is looked for, besides names. Few files have tags and comments, so
// that asking for these costs nothing beside the text; titles and authors, which most documents
// have, would cost more than it.
constexpr auto kWordsBeside =
    std::to_array<std::string_view>({kTextContent, "kMDItemUserTags", "kMDItemFinderComment"});

/// Parenthesised when it is a choice among others that must hold too.
std::string joined(const std::vector<std::string>& words, WordsIn in) {
  std::string query;
  for (const std::string& word : words) {
    if (!query.empty()) query += " && ";
    const bool needsParentheses = in == WordsIn::kNamesAndText && words.size() > 1;
    if (needsParentheses) query += '(';
    query += conditionForWord(word, in);
    if (needsParentheses) query += ')';
  }
  return query;
}

}  // namespace

std::string escapedPattern(std::string_view text) {
  std::string pattern;
  for (const char c : text) {
    if (c == '*' || c == '?' || c == '\\' || c == '"') pattern += '\\';
    pattern += c;
  }
  return pattern;
}

std::string conditionForWord(std::string_view word, WordsIn in) {
  const std::string pattern = escapedPattern(word);
  std::string condition = "kMDItemFSName == \"*" + pattern + "*\"cd";
  if (in == WordsIn::kNamesAndText) {
    for (const std::string_view attribute : kWordsBeside) {
      condition.append(" || ").append(attribute).append(" == \"" + pattern + "*\"cdw");
    }
  }
  return condition;
}

std::optional<std::string> queryFromWords(std::string_view words, WordsIn in) {
  std::vector<std::string> found;
  for (const SearchTerm& term : searchTermsIn(words)) {
    for (std::string& word : term.words()) found.push_back(std::move(word));
  }
  const std::size_t termsOfWord = in == WordsIn::kNamesAndText ? 1 + kWordsBeside.size() : 1;
  if (found.empty() || found.size() > kMaximumTerms / termsOfWord) return std::nullopt;
  std::string query = joined(found, in);
  if (query.size() > kMaximumQueryBytes) return std::nullopt;
  return query;
}

bool looksLikeQuery(std::string_view text) {
  QueryLexer lexer(text);
  do {
    lexer.skipBlanks();
  } while (lexer.take("(") || lexer.take("!"));
  const std::optional<std::string_view> name = lexer.takeName();
  if (!name) return false;
  lexer.skipBlanks();
  if (*name == "InRange" || *name == "inRange") return lexer.startsWith("(");
  if (lexer.startsWith("==")) return true;
  const bool isAttribute = name->starts_with('*') || name->starts_with("kMDItem") ||
                           name->starts_with("_kMDItem") || name->starts_with("com_");
  return isAttribute && lexer.takeOperator().has_value();
}

}  // namespace vt::query
