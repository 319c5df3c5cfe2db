#include "metadata/query/AttributeSchema.h"

#include <gmock/gmock.h>

#include "metadata/query/QueryTesting.h"

namespace vt::query {

TEST(AttributeSchema, KnowsWhatShips) {
  const AttributeSchema& schema = shippedSchema();
  EXPECT_EQ(schema.attributes().size(), 167U);
  const Attribute* authors = schema.find("kMDItemAuthors");
  ASSERT_NE(authors, nullptr);
  EXPECT_EQ(authors->type, AttributeType::kString);
  EXPECT_TRUE(authors->isMultiValued);
  EXPECT_TRUE(authors->isSearchable);
  EXPECT_EQ(authors->displayName, "Authors");
  EXPECT_THAT(authors->shortNames, testing::ElementsAre("author", "from", "by"));
  EXPECT_EQ(schema.find("kMDItemDueDate")->type, AttributeType::kDate);
  EXPECT_EQ(schema.find("kMDItemFSInvisible")->type, AttributeType::kBoolean);
  EXPECT_EQ(schema.find("_kMDItemGroupId")->type, AttributeType::kNumber);
}

TEST(AttributeSchema, KeepsTypesPathsAndContentFromTheStar) {
  for (const char* name : {"kMDItemContentType", "kMDItemContentTypeTree", "kMDItemPath",
                           "kMDItemTextContent", "kMDItemFSSize", "kMDItemDueDate"}) {
    EXPECT_FALSE(shippedSchema().find(name)->isSearchable) << name;
  }
}

TEST(AttributeSchema, FindsNamesToTheLetter) {
  EXPECT_EQ(shippedSchema().find("kmditemauthors"), nullptr);
  EXPECT_EQ(shippedSchema().find("kMDItemAuthor"), nullptr);
  EXPECT_EQ(shippedSchema().find(""), nullptr);
}

TEST(AttributeSchema, RefusesABadTableAndSaysWhere) {
  struct Case {
    const char* what;
    std::string_view line;
  };
  const Case cases[] = {
      {"too few columns", "a\tstring\t0\tA\t"},
      {"too many columns", "a\tstring\t0\tA\t\t0\t"},
      {"unknown type", "a\ttext\t0\tA\t\t0"},
      {"bad multi flag", "a\tstring\tn\tA\t\t0"},
      {"bad searchable flag", "a\tstring\t0\tA\t\tyes"},
      {"no name", "\tstring\t0\tA\t\t0"},
      {"a searchable number", "a\tnumber\t0\tA\t\t1"},
      {"a name twice", "b\tstring\t0\tB\t\t0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto schema =
        AttributeSchema::parse("heading\nb\tstring\t0\tB\t\t1\n" + std::string(c.line) + "\n");
    ASSERT_FALSE(schema);
    EXPECT_EQ(schema.error().line, 3U);
    EXPECT_FALSE(schema.error().message.empty());
  }
}

}  // namespace vt::query
