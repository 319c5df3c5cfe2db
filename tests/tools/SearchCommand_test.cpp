#include <gmock/gmock.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class SearchCommand : public CommandTest {
 protected:
  json searchJSON(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    const ProgramResult result = search(std::move(arguments));
    EXPECT_EQ(result.errors, "");
    return json::parse(result.output);
  }

  static std::vector<std::string> names(const json& group) {
    std::vector<std::string> names;
    for (const json& item : group["items"]) names.push_back(item["kMDItemDisplayName"]);
    return names;
  }
};

TEST_F(SearchCommand, GroupsByKindNewestFirst) {
  addFile("Budget old.pdf", 10, 2000);
  addFile("budget new.pdf", 10, 1000);
  addFile("deep/er/BUDGET.xlsx", 10, 0);
  addFile("other.pdf");
  const ProgramResult result = search({"budget"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_LT(result.output.find("budget new.pdf"), result.output.find("Budget old.pdf"));
  EXPECT_THAT(result.output, HasSubstr("PDF (2)\n  2026-11-20 23:43      10 B  "));
  EXPECT_THAT(result.output, HasSubstr("3 files in 2 groups, "));
  EXPECT_THAT(result.output, Not(HasSubstr("other.pdf")));
}

TEST_F(SearchCommand, PrintsTheRecordOfEachFileAsJSON) {
  const std::string path = addFile("a.pdf", 12, 0);
  const json report = searchJSON({"kMDItemFSName == \"a.pdf\""});
  EXPECT_EQ(report["query"], "kMDItemFSName == \"a.pdf\"");
  EXPECT_EQ(report["count"], 1);
  EXPECT_TRUE(report["seconds"].is_number());
  const json& item = report["groups"][0]["items"][0];
  EXPECT_EQ(item["kMDItemPath"], path);
  EXPECT_EQ(item["kMDItemContentModificationDate"], "2026-11-21T00:00:00Z");
  EXPECT_EQ(item["kMDItemContentTypeTree"][0], "com.adobe.pdf");
  EXPECT_EQ(item["kMDItemFSSize"], 12);
  EXPECT_TRUE(item.contains("kMDItemLastUsedDate"));
}

TEST_F(SearchCommand, EndsWithOneWhenNothingIsFound) {
  const ProgramResult result = search({"nothing-has-this-name"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, HasSubstr("0 files in 0 groups"));
}

TEST_F(SearchCommand, PointsAtTheMistakeInAQuery) {
  const ProgramResult result = search({"kMDItemFSName == \"a\" && && true"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.errors, HasSubstr("kMDItemFSName == \"a\" && && true\n"
                                       "                        ^\n"));
}

TEST_F(SearchCommand, TakesRawTextAsAQueryWhateverItLooksLike) {
  addFile("report.pdf");
  EXPECT_EQ(search({"report"}).exitCode, 0);
  EXPECT_EQ(search({"--raw", "report"}).exitCode, 2);
  EXPECT_EQ(search({"--raw", "true"}).exitCode, 0);
}

TEST_F(SearchCommand, FindsWordsInTheTextOfFiles) {
  write(tree_ / "letter.txt", "Dear colleagues, the zebra crossing is closed.\n");
  const json report = searchJSON({"zebra"});
  EXPECT_THAT(names(report["groups"][0]), ElementsAre("letter.txt"));
}

TEST_F(SearchCommand, ShowsAUserOnlyWhatTheyMayRead) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can search on behalf of others";
  addFile("open.pdf");
  const std::string own = addFile("ann only.pdf");
  const std::string team = addFile("team.pdf");
  const std::string hidden = addFile("closed/inside.pdf");
  ASSERT_EQ(chown(own.c_str(), 2001, 2001), 0);
  ASSERT_EQ(chmod(own.c_str(), 0600), 0);
  ASSERT_EQ(chown(team.c_str(), 0, 3001), 0);
  ASSERT_EQ(chmod(team.c_str(), 0640), 0);
  ASSERT_EQ(chmod((tree_ / "closed").c_str(), 0700), 0);
  EXPECT_EQ(searchJSON({"--user", "ann", "pdf"})["count"], 3);
  EXPECT_EQ(searchJSON({"--user", "ben", "pdf"})["count"], 1);
  EXPECT_EQ(searchJSON({"pdf"})["count"], 4);
}

TEST_F(SearchCommand, RefusesOptionsThatMakeNoSense) {
  struct Case {
    std::vector<std::string> arguments;
    const char* message;
  };
  const Case cases[] = {
      {{"--user", "nobody-has-this-name", "x"}, "no user is called"},
      {{"--kind", "Cheeses", "x"}, "no kind is called \"Cheeses\"; there are: "},
      {{"--sort", "smell", "x"}, "cannot be sorted by"},
      {{"--path", "/does/not/exist", "x"}, "/does/not/exist: "},
      {{"--path", "/etc/passwd", "x"}, "/etc/passwd: "},
      {{"--page", "0", "x"}, "--page"},
      {{"--per-page", "-3", "x"}, "--per-page"},
      {{"--descending", "x"}, "--sort"},
      {{"  "}, "nothing to search for"},
      {{}, "words"},
      {{"--no-such-option", "x"}, "--no-such-option"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    const ProgramResult result = search(c.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, HasSubstr(c.message));
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(SearchCommand, ShowsOnePageOfEachGroup) {
  for (int i = 0; i < 30; ++i) addFile("file " + std::to_string(i) + ".pdf", 1, i);
  EXPECT_THAT(search({"file"}).output, HasSubstr("1–25 of 30"));
  const json second = searchJSON({"--page", "2", "--per-page", "20", "file"});
  EXPECT_EQ(second["count"], 30);
  EXPECT_EQ(second["groups"][0]["items"].size(), 10U);
  EXPECT_EQ(second["groups"][0]["items"][0]["kMDItemDisplayName"], "file 20.pdf");
  EXPECT_EQ(searchJSON({"file"})["groups"][0]["items"].size(), 30U);
  EXPECT_EQ(searchJSON({"--page", "4000000000", "file"})["groups"][0]["items"].size(), 0U);
}

TEST_F(SearchCommand, SortsEachGroupAsAsked) {
  addFile("b.pdf", 1, 0);
  addFile("A.pdf", 3, 1);
  addFile("c.pdf", 2, 2);
  EXPECT_THAT(names(searchJSON({"--sort", "name", "pdf"})["groups"][0]),
              ElementsAre("A.pdf", "b.pdf", "c.pdf"));
  EXPECT_THAT(names(searchJSON({"--sort", "size", "--descending", "pdf"})["groups"][0]),
              ElementsAre("A.pdf", "c.pdf", "b.pdf"));
  EXPECT_THAT(names(searchJSON({"--sort", "kMDItemLastUsedDate", "pdf"})["groups"][0]),
              ElementsAre("c.pdf", "A.pdf", "b.pdf"));
}

TEST_F(SearchCommand, ShowsOneKindWhenAsked) {
  addFile("x.pdf");
  addFile("x.jpg");
  const json report = searchJSON({"--kind", "pdf", "x"});
  ASSERT_EQ(report["groups"].size(), 1U);
  EXPECT_EQ(report["groups"][0]["title"], "PDF");
}

TEST_F(SearchCommand, KeepsHostileNamesOnTheirLine) {
  addFile("evil\n\x1b[31mname.pdf");
  addFile("bad \xff byte name.pdf");
  const ProgramResult result = search({"name"});
  EXPECT_THAT(result.output, HasSubstr("evil\\x0a\\x1b[31mname.pdf"));
  EXPECT_THAT(result.output, HasSubstr("bad \uFFFD byte name.pdf"));
  EXPECT_EQ(searchJSON({"name"})["count"], 2);
}

TEST_F(SearchCommand, SearchesTheFoldersOfTheSettingsWithoutAPath) {
  addFile("in settings.pdf");
  EXPECT_EQ(vistaro({"search", "settings"}).exitCode, 2);
  std::filesystem::create_directories(root_ / "Library/Application Support/Vistaro");
  write(root_ / "Library/Application Support/Vistaro/Settings.plist",
        "<plist version=\"1.0\"><dict><key>SearchFolders</key><array><dict>"
        "<key>title</key><string>All</string><key>path</key><string>" +
            tree_.path().string() + "</string></dict></array></dict></plist>");
  EXPECT_EQ(vistaro({"search", "settings"}).exitCode, 0);
}

TEST_F(SearchCommand, ShowsTheLogOnlyWhenAsked) {
  addFile("x.pdf");
  EXPECT_EQ(search({"x"}).errors, "");
  EXPECT_THAT(search({"--verbose", "x"}).errors, HasSubstr("Found 1 elements for query "));
}

}  // namespace
}  // namespace vt
