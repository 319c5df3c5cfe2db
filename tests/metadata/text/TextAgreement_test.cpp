#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "metadata/query/TextMatcher.h"
#include "metadata/text/TextTable.h"

namespace vt {
namespace {

constexpr std::uint32_t kSeed = 20261121;
// Some seconds of work; VISTARO_PAIRS sets another number of questions.
constexpr std::size_t kQuestions = 4000;
constexpr std::size_t kQuestionsOfATable = 400;
constexpr std::size_t kTextsOfATable = 60;

/// Texts and questions of few words, so that they meet: with case, digits, marks, ideographs and
/// separators wherever they can make a difference.
class RandomText {
 public:
  explicit RandomText(std::uint32_t seed) : random_(seed) {}

  std::uint32_t pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

  std::string next(std::uint32_t mostPieces) {
    constexpr auto kPieces = std::to_array<const char*>({"budget",   "Budget",
                                                         "Plan",     "BUD",
                                                         "my",       "My",
                                                         "Window",   "a",
                                                         "A",        "b",
                                                         "B",        "ab",
                                                         "9",        "10",
                                                         "2024",     "ß",
                                                         "Größe",    "gross",
                                                         "ﬃ",        "日",
                                                         "本",       "語",
                                                         "の",       "カ",
                                                         "か\u3099", "ｶ\uFF9E",
                                                         "\u3099",   "é",
                                                         "e\u0301",  "\u0301",
                                                         "①",        "Ⅷ",
                                                         "ͅ",         "ι",
                                                         "한국",     "Мир",
                                                         "Труд",     "x\u0323\u0301",
                                                         "ǅ",        "ª"});
    constexpr auto kSeparators =
        std::to_array<const char*>({" ", " ", "_", "-", ", ", "\n", "😀", "\xFF", " \u0301", "・"});
    std::string text;
    for (std::uint32_t left = 1 + pick(mostPieces); left > 0; --left) {
      text += kPieces[pick(kPieces.size())];
      if (pick(2) == 0) text += kSeparators[pick(kSeparators.size())];
    }
    return text;
  }

  /// A pattern that mostly stands in `text` somewhere.
  std::string patternIn(const std::string& text) {
    std::string pattern;
    if (pick(3) == 0) {
      pattern = next(3);
    } else {
      const auto from = pick(static_cast<std::uint32_t>(text.size()));
      pattern = text.substr(from, 1 + pick(14));
    }
    if (pick(4) == 0) pattern += '*';
    if (pick(2) == 0) return pattern;
    for (std::uint32_t left = pick(4); left > 0; --left) {
      const std::size_t at = pick(static_cast<std::uint32_t>(pattern.size() + 1));
      pattern.insert(at, pick(3) == 0 ? "?" : "*");
    }
    return pattern;
  }

 private:
  std::mt19937 random_;
};

TEST(TextAgreement, OfTheIndexWithTheComparisonOfEachTextIsComplete) {
  const char* const wanted = std::getenv("VISTARO_PAIRS");
  const std::size_t questions = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : kQuestions;
  RandomText random(kSeed);
  std::size_t found = 0;
  std::size_t patterns = 0;
  for (std::size_t done = 0; done < questions;) {
    TextTable table;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kTextsOfATable; ++i) {
      texts.push_back(random.next(9));
      table.add(texts.back());
    }
    for (std::size_t i = 0; i < kQuestionsOfATable && done < questions; ++i, ++done) {
      const std::string pattern = random.patternIn(texts[random.pick(kTextsOfATable)]);
      const std::uint8_t modifiers = random.pick(4) == 0 ? query::modifier::kTokens : 0;
      const ContentQuery question = contentQueryOf(pattern, modifiers);
      for (const ContentElement& element : question.all)
        patterns += element.pattern.empty() ? 0 : 1;
      const query::TextMatcher matcher(pattern, modifiers, query::TextMatcher::Subject::kContent);
      std::vector<std::size_t> expected;
      for (std::size_t text = 0; text < texts.size(); ++text) {
        if (matcher.matches(query::segmentContent(texts[text]))) expected.push_back(text + 1);
      }
      ASSERT_EQ(table.find(question), expected)
          << "seed " << kSeed << ", question " << done << ", modifiers " << int{modifiers} << ": "
          << pattern;
      found += expected.size();
    }
  }
  // Agreeing says nothing when there is nothing to agree on.
  EXPECT_GT(found, questions);
  EXPECT_GT(patterns, questions / 5);
  std::cout << questions << " questions, " << found << " matches, " << patterns
            << " patterns that the vocabulary has told, seed " << kSeed << "\n";
}

}  // namespace
}  // namespace vt
