#include "metadata/text/TermSet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vt {
namespace {

TEST(TermSet, HasWhatWasPutIn) {
  const std::string terms[] = {
      "a", "abudget", std::string(15, 'x'), std::string(16, 'x'), std::string(250, 'x'), "a日本",
  };
  TermSet set;
  for (const std::string& term : terms) {
    SCOPED_TRACE(term);
    EXPECT_TRUE(set.insert(term));
    EXPECT_FALSE(set.insert(term));
  }
}

TEST(TermSet, TellsTermsApartToTheLetter) {
  std::vector<std::string> terms{"a", "b"};
  for (std::size_t at = 0; terms[at].size() < 12; ++at) {
    for (const char letter : {'a', 'b', '\0'}) terms.push_back(terms[at] + letter);
  }
  TermSet set;
  std::size_t known = 0;
  for (const std::string& term : terms) known += set.insert(term) ? 0 : 1;
  EXPECT_EQ(known, 0U) << "of " << terms.size();
}

TEST(TermSet, KeepsTheWordsOfALanguage) {
  TermSet set;
  constexpr int kWords = 300'000;
  for (int i = 0; i < kWords; ++i) set.insert(std::to_string(i));
  int forgotten = 0;
  for (int i = 0; i < kWords; ++i) forgotten += set.insert(std::to_string(i)) ? 1 : 0;
  EXPECT_LT(forgotten, kWords / 100);
}

TEST(TermSet, ForgetsWhatItHasNoRoomFor) {
  TermSet set;
  constexpr int kTerms = 1'000'000;
  for (int i = 0; i < kTerms; ++i) ASSERT_TRUE(set.insert(std::to_string(i)));
  int forgotten = 0;
  for (int i = 0; i < kTerms; ++i) forgotten += set.insert(std::to_string(i)) ? 1 : 0;
  EXPECT_GT(forgotten, kTerms / 4);
}

}  // namespace
}  // namespace vt
