#include "metadata/query/PlainWords.h"

#include <gtest/gtest.h>

#include <random>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

TEST(PlainWords, BecomeAQueryForNameTextAndWhatPeopleGave) {
  struct Case {
    std::string_view words;
    std::string query;
  };
  const Case cases[] = {
      {"budget",
       "kMDItemFSName == \"*budget*\"cd || kMDItemTextContent == \"budget*\"cdw || "
       "kMDItemUserTags == \"budget*\"cdw || kMDItemFinderComment == \"budget*\"cdw"},
      {" annual\treport\n", "(" + conditionForWord("annual", WordsIn::kNamesAndText) + ") && (" +
                                conditionForWord("report", WordsIn::kNamesAndText) + ")"},
      {"\"annual report\"", conditionForWord("annual report", WordsIn::kNamesAndText)},
      {"\"annual report", conditionForWord("annual report", WordsIn::kNamesAndText)},
      {"a*?\\'b",
       "kMDItemFSName == \"*a\\*\\?\\\\'b*\"cd || kMDItemTextContent == \"a\\*\\?\\\\'b*\"cdw || "
       "kMDItemUserTags == \"a\\*\\?\\\\'b*\"cdw || kMDItemFinderComment == \"a\\*\\?\\\\'b*\"cdw"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.words);
    EXPECT_EQ(queryFromWords(c.words), c.query);
  }
}

TEST(PlainWords, CanAskForNamesAlone) {
  EXPECT_EQ(queryFromWords("budget", WordsIn::kNames), "kMDItemFSName == \"*budget*\"cd");
  EXPECT_EQ(queryFromWords("annual report", WordsIn::kNames),
            "kMDItemFSName == \"*annual*\"cd && kMDItemFSName == \"*report*\"cd");
}

TEST(PlainWords, AreNoQueryWhenThereAreNone) {
  using namespace std::string_view_literals;
  for (const std::string_view words : {""sv, "  \t\n"sv, "\"\""sv, "\" \" \""sv, "\0\x01"sv}) {
    EXPECT_FALSE(queryFromWords(words));
  }
  EXPECT_FALSE(queryFromWords(std::string(40000, 'a')));  // too long for a query
}

TEST(PlainWords, FindFilesByNameTextTagOrComment) {
  struct Case {
    std::string_view words;
    std::string_view item;
    bool isFound;
  };
  const Case cases[] = {
      {"größe", "kMDItemFSName=Schuhgrossen.txt", true},
      {"annual report", "kMDItemFSName=report ; text=The annual figures", true},
      {"annual report", "kMDItemFSName=report", false},
      {"bud", "text=budgets", true},
      {"get", "text=budgets", false},
      {"get", "kMDItemFSName=budgets", true},
      {"\"a b\"", "kMDItemFSName=xa by", true},
      {"\"a b\"", "kMDItemFSName=b a", false},
      {"urgent", "kMDItemUserTags=Very urgent", true},
      {"gent", "kMDItemUserTags=Very urgent", false},
      {"very", "kMDItemFinderComment=Very urgent", true},
      {"very", "kMDItemTitle=Very urgent", false},
      {"*", "kMDItemFSName=a", false},
      {"*", "kMDItemFSName=a*", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.words) + " in " + std::string(c.item));
    TableItem item = TableItem::parse(c.item);
    EXPECT_EQ(matches(queryFromWords(c.words).value(), item), c.isFound);
  }
}

TEST(PlainWords, ParseWhateverTheyAre) {
  constexpr std::uint32_t kSeed = 7;
  std::mt19937 random(kSeed);
  const std::string_view special = "\"'\\*?[]()!&|=<>$;\xC3\xFF\x80\xF0\x9F 	\x01";
  for (int round = 0; round < 20000; ++round) {
    std::string words;
    for (std::size_t n = random() % 12; n > 0; --n) {
      words += random() % 2 == 0 ? special[random() % special.size()]
                                 : static_cast<char>(random() % 256);
    }
    if (const auto query = queryFromWords(words)) {
      const auto result = parseQuery(*query, shippedSchema());
      ASSERT_TRUE(result) << "seed " << kSeed << " round " << round << ": "
                          << describeQueryError(result.error()) << "\n"
                          << *query;
      ASSERT_TRUE(looksLikeQuery(*query));
    }
  }
}

TEST(PlainWords, AreToldFromQueriesByTheirForm) {
  const char* queries[] = {"kMDItemFSName == \"x\"",
                           "kMDItemFSName=x",
                           " ( ! (kMDItemFSName != x",
                           "* = \"x\"",
                           "**==x",
                           "_kMDItemGroupId > 6",
                           "com_example_shot < 5",
                           "InRange(kMDItemFSSize,1,2)",
                           "!inRange (",
                           "shot == 5",
                           "kMDItemFSName == ",
                           "a==b",
                           "kMDItemFSSize >= 5",
                           "kMDItemX === 5"};
  for (const char* text : queries) EXPECT_TRUE(looksLikeQuery(text)) << text;
  const char* words[] = {
      "",     "budget", "true",       "false",     "a=b",         "x < 5",   "a != b",
      "*",    "**",     "*.txt",      "(draft)",   "!important",  "InRange", "kMDItemFSName",
      "== x", "5 == 5", "\"a == b\"", "com.x = 5", "budget a==b", "(* note)"};
  for (const char* text : words) EXPECT_FALSE(looksLikeQuery(text)) << text;
}

}  // namespace vt::query
