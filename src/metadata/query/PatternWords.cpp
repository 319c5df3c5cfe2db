#include "metadata/query/PatternWords.h"

#include <algorithm>

#include "metadata/query/WordBoundaries.h"

namespace vt::query {

std::vector<PatternWord> patternWords(const std::vector<PatternCharacter>& pattern) {
  using Kind = PatternCharacter::Kind;
  std::vector<PatternWord> words;
  PatternWord word;
  const auto endWord = [&] {
    const bool asksForSomething = std::ranges::any_of(word, [](const PatternCharacter& c) {
      return c.kind == Kind::kAnyCharacter ||
             (c.kind == Kind::kLiteral && classOf(c.literal) != CharacterClass::kMark);
    });
    if (asksForSomething) words.push_back(word);
    word.clear();
  };
  for (const PatternCharacter& character : pattern) {
    if (character.kind == Kind::kLiteral &&
        classOf(character.literal) == CharacterClass::kSeparator) {
      endWord();
    } else {
      word.push_back(character);
    }
  }
  endWord();
  return words;
}

}  // namespace vt::query
