#include "metadata/types/ContentTypesParser.h"

#include <gtest/gtest.h>

#include <string>

namespace vt {
namespace {

const char kHead[] = "identifier\tconforms_to\textensions\tmime_types\tdescription\tother_form\n";
// What every table must have: lines 2 to 6.
const char kBasics[] =
    "public.item\t\t\t\t\t\n"
    "public.data\tpublic.item\t\t\t\t\n"
    "public.directory\tpublic.item\t\t\t\t\n"
    "public.folder\tpublic.directory\t\t\t\t\n"
    "public.symlink\tpublic.item\t\t\t\t\n";

std::string table(const std::string& rows) { return std::string(kHead) + kBasics + rows; }

TEST(ContentTypesParser, ReportsTheLineOfWhatIsWrong) {
  const struct {
    const char* what;
    std::string text;
    std::size_t line;
    const char* reason;
  } cases[] = {
      {"empty", "", 1, "it is empty"},
      {"no header", kBasics, 1, "its first line does not name the columns"},
      {"header with a return", "identifier\tconforms_to\r\n", 1,
       "its first line does not name the columns"},
      {"five columns", table("a\t\t\t\t\n"), 7, "a row has not six columns"},
      {"seven columns", table("a\t\t\t\t\t\t\n"), 7, "a row has not six columns"},
      {"blank line", table("\n"), 7, "a row has not six columns"},
      {"no identifier", table("\t\t\t\t\t\n"), 7, "a row has no identifier"},
      {"twice", table("a\t\t\t\t\t\nA\t\t\t\t\t\n"), 8, "\"A\" is listed twice"},
      {"empty extension", table("a\t\tx,,y\t\t\t\n"), 7, "an extension is empty"},
      {"unknown parent", table("a\tb\t\t\t\t\n"), 7, "there is no type \"b\""},
      {"own parent", table("a\ta\t\t\t\t\n"), 7, "the parents of \"a\" go in a circle"},
      {"circle of two", table("a\tb\t\t\t\t\nb\ta\t\t\t\t\n"), 7,
       "the parents of \"a\" go in a circle"},
      {"extension twice", table("a\t\tx\t\t\t\nb\t\tX\t\t\t\n"), 8,
       "the extension \"x\" is listed twice"},
      {"extension twice in one row", table("a\t\tx,x\t\t\t\n"), 7,
       "the extension \"x\" is listed twice"},
      {"unknown other form", table("a\t\tx\t\t\tb\n"), 7, "there is no type \"b\""},
      {"other form of the same sort", table("a\t\tx\t\t\tpublic.data\n"), 7,
       "the other form of a package is a file and of a file a package"},
      {"no fallback", std::string(kHead) + "public.item\t\t\t\t\t\n", 3,
       "there is no type \"public.data\""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto types = ContentTypes::parse(c.text);
    ASSERT_FALSE(types);
    EXPECT_EQ(types.error().line, c.line);
    EXPECT_EQ(types.error().reason, c.reason);
  }
}

TEST(ContentTypesParser, TakesTheLongestSuffixThatTheTableHas) {
  const auto types =
      ContentTypes::parse(table("gz\tpublic.data\tgz\t\t\t\ntgz\tpublic.data\ttar.gz\t\t\t\n"));
  ASSERT_TRUE(types);
  const struct {
    const char* name;
    const char* type;
  } cases[] = {
      {"a.gz", "gz"},   {"a.tar.gz", "tgz"}, {"a.b.tar.gz", "tgz"}, {"a.TAR.Gz", "tgz"},
      {"tar.gz", "gz"}, {".tar.gz", "gz"},   {"a.star.gz", "gz"},   {"a.tar", "public.data"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ((*types)[types->typeOfFile(c.name)].identifier, c.type);
  }
}

TEST(ContentTypesParser, ReadsATableWhoseLastLineHasNoEnd) {
  const auto types = ContentTypes::parse(table("a\tpublic.data\tx\ttext/x\tAn a\t"));
  ASSERT_TRUE(types);
  EXPECT_EQ((*types)[types->typeOfFile("f.x")].description, "An a");
  EXPECT_EQ(types->preferredMimeType("A"), "text/x");
}

TEST(ContentTypesParser, PutsATypeThatIsNearAndFarAtItsFarPlace) {
  // d is a parent of a and also a grandparent of it by b.
  const auto types =
      ContentTypes::parse(table("a\td,b\t\t\t\t\nb\tc\t\t\t\t\nc\td\t\t\t\t\nd\t\t\t\t\t\n"));
  ASSERT_TRUE(types);
  std::string order;
  for (const ContentTypeId id : (*types)[types->find("a").value()].tree) {
    order += (*types)[id].identifier;
  }
  EXPECT_EQ(order, "abcd");
}

}  // namespace
}  // namespace vt
