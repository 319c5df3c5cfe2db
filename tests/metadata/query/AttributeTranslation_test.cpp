#include "metadata/query/AttributeTranslation.h"

#include <gmock/gmock.h>

#include <set>

#include "foundation/TextFolding.h"
#include "metadata/query/QueryTesting.h"
#include "support/Places.h"

namespace vt::query {
namespace {

using testing::ElementsAre;

AttributeTranslation translation(std::string_view lines) {
  return AttributeTranslation::parse("name\tdisplay name\tshort names\n" + std::string(lines))
      .value();
}

const AttributeTranslation& shippedGerman() {
  static const AttributeTranslation kGerman =
      AttributeTranslation::parse(readWhole(resourcePath("attributes.de.tsv"))).value();
  return kGerman;
}

TEST(AttributeTranslation, GivesNamesInThatLanguageAndKeepsTheEnglishShortOnes) {
  const AttributeTranslation german = translation("kMDItemAuthors\tAutoren\tautor,von,by\n");
  const AttributeSchema schema = translated(shippedSchema(), std::span(&german, 1));
  const Attribute* authors = schema.find("kMDItemAuthors");
  ASSERT_NE(authors, nullptr);
  EXPECT_EQ(authors->displayName, "Autoren");
  EXPECT_THAT(authors->shortNames, ElementsAre("autor", "von", "by", "author", "from"));
  EXPECT_TRUE(authors->isMultiValued);
}

TEST(AttributeTranslation, LeavesInEnglishWhatItDoesNotName) {
  const AttributeTranslation german =
      translation("kMDItemAuthors\tAutoren\t\nnot.an.attribute\tNichts\tnichts\n");
  const AttributeSchema schema = translated(shippedSchema(), std::span(&german, 1));
  EXPECT_EQ(schema.find("kMDItemTitle")->displayName, "Title");
  EXPECT_THAT(schema.find("kMDItemTitle")->shortNames, ElementsAre("title"));
  EXPECT_THAT(schema.find("kMDItemAuthors")->shortNames, ElementsAre("author", "from", "by"));
  EXPECT_EQ(schema.find("not.an.attribute"), nullptr);
  EXPECT_EQ(schema.attributes().size(), shippedSchema().attributes().size());
}

TEST(AttributeTranslation, AsksOneLanguageAfterTheOther) {
  const std::vector<AttributeTranslation> languages = {
      translation("kMDItemAuthors\tAutoren\tautor\n"),
      translation("kMDItemAuthors\tAuteurs\tauteur\nkMDItemTitle\tTitre\ttitre\n")};
  const AttributeSchema schema = translated(shippedSchema(), languages);
  EXPECT_EQ(schema.find("kMDItemAuthors")->displayName, "Autoren");
  EXPECT_THAT(schema.find("kMDItemAuthors")->shortNames,
              ElementsAre("autor", "author", "from", "by"));
  EXPECT_EQ(schema.find("kMDItemTitle")->displayName, "Titre");
}

TEST(AttributeTranslation, RefusesABadTableAndSaysWhere) {
  struct Case {
    const char* what;
    std::string_view line;
  };
  const Case cases[] = {
      {"too few columns", "a\tA"},   {"too many columns", "a\tA\ta\t"},  {"no name", "\tA\ta"},
      {"no display name", "a\t\ta"}, {"a name twice", "b\tAnother B\t"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto parsed =
        AttributeTranslation::parse("heading\nb\tB\t\n" + std::string(c.line) + "\n");
    ASSERT_FALSE(parsed);
    EXPECT_EQ(parsed.error().line, 3U);
    EXPECT_FALSE(parsed.error().message.empty());
  }
}

TEST(AttributeTranslation, ReadsLinesOfWindowsAndAnEmptyTable) {
  const auto german = AttributeTranslation::parse("heading\r\nkMDItemTitle\tTitel\ttitel\r\n\r\n");
  ASSERT_TRUE(german);
  EXPECT_THAT(german->find("kMDItemTitle")->shortNames, ElementsAre("titel"));
  EXPECT_EQ(AttributeTranslation::parse("")->size(), 0U);
}

TEST(ShippedGerman, NamesEveryAttributeThatThereIsAndNoOther) {
  EXPECT_EQ(shippedGerman().size(), shippedSchema().attributes().size());
  for (const Attribute& attribute : shippedSchema().attributes()) {
    EXPECT_NE(shippedGerman().find(attribute.name), nullptr) << attribute.name;
  }
}

TEST(ShippedShortNames, AreSingleLowerCaseWordsEachOncePerAttribute) {
  const AttributeSchema german = translated(shippedSchema(), std::span(&shippedGerman(), 1));
  for (const AttributeSchema* schema : {&shippedSchema(), &german}) {
    for (const Attribute& attribute : schema->attributes()) {
      std::set<std::string> seen;
      for (const std::string& word : attribute.shortNames) {
        SCOPED_TRACE(attribute.name + " " + word);
        EXPECT_EQ(word.find_first_of(" \t,:"), std::string::npos);
        EXPECT_FALSE(word.empty());
        EXPECT_EQ(word, foldText(word, Folding::kCase)) << "a capital hides earlier attributes";
        EXPECT_TRUE(seen.insert(word).second);
      }
    }
  }
}

}  // namespace
}  // namespace vt::query
