#include "metadata/text/TermSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vt {
namespace {

using Terms = std::vector<std::string>;

/// Puts the terms in, and gives those that were new.
Terms newOf(TermSet& set, const Terms& terms) {
  Terms found;
  const auto take = [&](std::string_view term) { found.emplace_back(term); };
  for (const std::string& term : terms) set.insert(term, take);
  set.finish(take);
  return found;
}

Terms numbersBelow(int end) {
  Terms numbers;
  for (int i = 0; i < end; ++i) numbers.push_back(std::to_string(i));
  return numbers;
}

TEST(TermSet, TellsOfATermOnce) {
  const Terms terms{
      "a", "abudget", std::string(15, 'x'), std::string(16, 'x'), std::string(250, 'x'), "a日本",
  };
  TermSet set;
  for (const std::string& term : terms) {
    SCOPED_TRACE(term);
    EXPECT_EQ(newOf(set, {term, term}), Terms{term});
    EXPECT_EQ(newOf(set, {term}), Terms());
  }
}

TEST(TermSet, TellsTermsApartToTheLetter) {
  Terms terms{"a", "b"};
  for (std::size_t at = 0; terms[at].size() < 10; ++at) {
    for (const char letter : {'a', 'b', '\0'}) terms.push_back(terms[at] + letter);
  }
  TermSet set;
  Terms found = newOf(set, terms);
  std::ranges::sort(found);
  std::ranges::sort(terms);
  EXPECT_EQ(found, terms);
}

TEST(TermSet, KeepsTheWordsOfALanguage) {
  const Terms terms = numbersBelow(300'000);
  TermSet set;
  newOf(set, terms);
  EXPECT_LT(newOf(set, terms).size(), terms.size() / 100);
}

TEST(TermSet, ForgetsWhatItHasNoRoomFor) {
  const Terms terms = numbersBelow(1'000'000);
  TermSet set;
  EXPECT_EQ(newOf(set, terms).size(), terms.size());
  EXPECT_GT(newOf(set, terms).size(), terms.size() / 4);
}

}  // namespace
}  // namespace vt
