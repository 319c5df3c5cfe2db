#include "metadata/query/PlainWords.h"

#include <cstddef>
#include <vector>

#include "foundation/UTF8.h"
#include "metadata/query/QueryLexer.h"
#include "metadata/query/QueryParser.h"
#include "metadata/query/WordBoundaries.h"

namespace vt::query {

namespace {

/// The words of the text, with phrases whole; what cannot stand in a query is replaced.
std::vector<std::string> split(std::string_view text) {
  std::vector<std::string> words;
  std::string word;
  const auto endWord = [&] {
    // A phrase of blanks asks for nothing.
    if (word.find_first_not_of(' ') != std::string::npos) words.push_back(word);
    word.clear();
  };
  bool isInPhrase = false;
  for (std::size_t at = 0; at < text.size();) {
    const DecodedCodePoint character = decodeCodePoint(text.substr(at));
    at += character.length;
    const bool isBlank = character.codePoint <= 0x20;  // the control characters too
    if (character.codePoint == '"') {
      isInPhrase = !isInPhrase;
      endWord();
    } else if (isBlank && !isInPhrase) {
      endWord();
    } else {
      appendCodePoint(word, isBlank ? U' ' : character.codePoint);
    }
  }
  endWord();
  return words;
}

std::string escaped(std::string_view word) {
  std::string text;
  for (const char c : word) {
    if (c == '*' || c == '?' || c == '\\' || c == '"') text += '\\';
    text += c;
  }
  return text;
}

}  // namespace

std::optional<std::string> queryFromWords(std::string_view words, WordsIn in) {
  const std::vector<std::string> found = split(words);
  const bool asksForText = in == WordsIn::kNamesAndText;
  const std::size_t most = asksForText ? kMaximumTerms / 2 : kMaximumTerms;
  if (found.empty() || found.size() > most) return std::nullopt;
  std::string query;
  for (const std::string& word : found) {
    if (!query.empty()) query += " && ";
    const std::string text = escaped(word);
    const bool needsParentheses = asksForText && found.size() > 1;
    if (needsParentheses) query += '(';
    query.append("kMDItemFSName == \"*").append(text).append("*\"cd");
    if (asksForText) query.append(" || kMDItemTextContent == \"").append(text).append("*\"cdw");
    if (needsParentheses) query += ')';
  }
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
