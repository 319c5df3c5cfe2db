#include "metadata/query/TypedQuery.h"

#include <gtest/gtest.h>

#include <random>

#include "metadata/query/QueryTesting.h"

namespace vt::query {
namespace {

std::vector<std::string> attributesCalled(const std::string& shortName) {
  if (shortName == "author") return {"kMDItemAuthors"};
  if (shortName == "date") return {"kMDItemContentModificationDate", "kMDItemLastUsedDate"};
  if (shortName == "kind") return {"kMDItemKind"};
  if (shortName == "size") return {"kMDItemFSSize"};
  if (shortName == "gone") return {"not.in.the.table"};
  return {};
}

std::vector<std::string> typesOfKind(const std::string& word) {
  if (word == "image") return {"public.image"};
  return {};
}

Result<std::string, TypedQueryError> translated(std::string_view typed,
                                                WordsIn in = WordsIn::kNames) {
  const auto attributes = [](const std::string& name) { return attributesCalled(name); };
  const auto types = [](const std::string& word) { return typesOfKind(word); };
  return queryFromTyped(typed, shippedSchema(), {attributes, types}, in);
}

}  // namespace

TEST(TypedQuery, TranslatesWordsAndNamedValues) {
  struct Case {
    std::string_view typed;
    std::string_view query;
  };
  const Case cases[] = {
      {"plan", "kMDItemFSName == \"*plan*\"cd"},
      {"author:smith", "kMDItemAuthors == \"*smith*\"cd"},
      {"plan author:\"john smith\"",
       "kMDItemFSName == \"*plan*\"cd && kMDItemAuthors == \"*john smith*\"cd"},
      {"kind:pdf", "kMDItemKind == \"*pdf*\"cd"},
      {"kind:image", "kMDItemKind == \"*image*\"cd || kMDItemContentTypeTree == \"public.image\""},
      {"kind:image size:0",
       "(kMDItemKind == \"*image*\"cd || kMDItemContentTypeTree == \"public.image\") && "
       "kMDItemFSSize == 0"},
      {"date:2024 x",
       "((kMDItemContentModificationDate >= $time.iso(2024-01-01) && "
       "kMDItemContentModificationDate < $time.iso(2025-01-01)) || "
       "(kMDItemLastUsedDate >= $time.iso(2024-01-01) && "
       "kMDItemLastUsedDate < $time.iso(2025-01-01))) && kMDItemFSName == \"*x*\"cd"},
      {"other:smith", "kMDItemFSName == \"*other:smith*\"cd"},
      {"gone:smith", "kMDItemFSName == \"*gone:smith*\"cd"},
      {"\"author:smith\"", "kMDItemFSName == \"*author:smith*\"cd"},
      {" kMDItemFSName == \"x\"", " kMDItemFSName == \"x\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.typed);
    const auto query = translated(c.typed);
    ASSERT_TRUE(query);
    EXPECT_EQ(*query, c.query);
  }
}

TEST(TypedQuery, AsksForTextWhereThatIsWanted) {
  const auto query = translated("plan size:0", WordsIn::kNamesAndText);
  ASSERT_TRUE(query);
  EXPECT_EQ(*query,
            "(" + conditionForWord("plan", WordsIn::kNamesAndText) + ") && kMDItemFSSize == 0");
}

TEST(TypedQuery, TellsWhatIsWrongAndWhere) {
  using Kind = TypedQueryError::Kind;
  struct Case {
    std::string typed;
    Kind kind;
    std::size_t offset;
    std::string_view text;
  };
  const Case cases[] = {
      {"", Kind::kNothing, 0, ""},
      {"\" \"", Kind::kNothing, 0, ""},
      {"größe size:big", Kind::kNumber, 13, "big"},
      {"date:\"some day\"", Kind::kDate, 6, "some day"},
      {std::string(70'000, 'a'), Kind::kTooLong, 0, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.typed.substr(0, 20));
    const auto query = translated(c.typed);
    ASSERT_FALSE(query);
    EXPECT_EQ(query.error().kind, c.kind);
    EXPECT_EQ(query.error().offset, c.offset);
    EXPECT_EQ(query.error().text, c.text);
  }
}

TEST(TypedQuery, GivesQueriesThatParseWhateverIsTyped) {
  static constexpr std::string_view kPieces[] = {
      "author:", "date:", "size:", "kind:", "image", "today", "2024", "..", ">", "=", "12",
      "mb",      "\"",    " ",     "\\",    "*",     "(",     "\xff", "\n", "ü", "!"};
  std::mt19937 random(11);
  for (int round = 0; round < 20'000; ++round) {
    std::string typed;
    for (unsigned left = random() % 8; left > 0; --left)
      typed += kPieces[random() % std::size(kPieces)];
    if (looksLikeQuery(typed)) continue;
    const auto query = translated(typed);
    if (!query) continue;
    EXPECT_TRUE(parseQuery(*query, shippedSchema())) << typed << " gives " << *query;
  }
}

}  // namespace vt::query
