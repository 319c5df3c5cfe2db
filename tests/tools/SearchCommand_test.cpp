#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

class SearchCommand : public CommandTest {
 protected:
  json searchJSON(std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    const ProgramResult result = search(std::move(arguments));
    EXPECT_EQ(result.errors, kWalkedWithoutIndex);
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
  EXPECT_THAT(result.output, HasSubstr("PDF Documents (2)\n  2026-11-20 23:43      10 B  "));
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

TEST_F(SearchCommand, PrintsJSONLaidOutInLines) {
  const std::string path = addFile("a.pdf");
  const std::string output = search({"--json", "--raw", "kMDItemFSName == \"a.pdf\""}).output;
  EXPECT_EQ(output, nlohmann::ordered_json::parse(output).dump(2) + "\n");
  const std::string nothing = search({"--json", "--raw", "false"}).output;
  EXPECT_THAT(nothing, HasSubstr("\n  \"groups\": []\n}\n"));
}

TEST_F(SearchCommand, EscapesWhatJSONCannotHold) {
  const std::string names[] = {"tab\t line\n quote\" back\\slash \x01\x1f\x7f.pdf", "\xC3\xA4.pdf",
                               "\xE4.pdf"};
  for (const std::string& name : names) addFile(name);
  const json report = searchJSON({"kMDItemFSName == \"*.pdf\""});
  EXPECT_THAT(SearchCommand::names(report["groups"][0]),
              UnorderedElementsAre(names[0], names[1], "\xEF\xBF\xBD.pdf"));
}

TEST_F(SearchCommand, TellsDatesOfAllYears) {
  const std::string path = addFile("a.pdf");
  for (const auto& [time, text] : {std::pair<std::time_t, std::string>{0, "1970-01-01T00:00:00Z"},
                                   {-1, "1969-12-31T23:59:59Z"},
                                   {951782399, "2000-02-28T23:59:59Z"},
                                   {4107542399, "2100-02-28T23:59:59Z"}}) {
    SCOPED_TRACE(text);
    const utimbuf times{time, time};
    utime(path.c_str(), &times);
    const json report = searchJSON({"kMDItemFSName == \"a.pdf\""});
    EXPECT_EQ(report["groups"][0]["items"][0]["kMDItemContentModificationDate"], text);
  }
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
  addFile("closed/inside.pdf");
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
      {{"--path", "", "x"}, "--path needs the name of a folder"},
      {{"--page", "0", "x"}, "--page: \"0\" is no whole number from 1 to 4294967295; "},
      {{"--page", "99999999999999999999", "x"}, "--page: \"99999999999999999999\" is no whole"},
      {{"--per-page", "-3", "x"}, "--per-page: \"-3\" is no whole number"},
      {{"--per-page", "0x10", "x"}, "--per-page: \"0x10\" is no whole number"},
      {{"--per-page", "1.5", "x"}, "--per-page: \"1.5\" is no whole number"},
      {{"--per-page", "", "x"}, "--per-page: \"\" is no whole number"},
      {{"--descending", "x"}, "--sort"},
      {{"--sort", "name", "--sort", "size", "x"}, "--sort can be given only once"},
      {{"--user"}, "--user needs a value"},
      {{"  "}, "nothing to search for"},
      {{""}, "nothing to search for"},
      {{"\""}, "nothing to search for"},
      {{"--raw", " "}, "nothing to search for"},
      {{}, "words"},
      {{"--no-such-option", "x"}, "there is no option --no-such-option; "},
      {{"--\x1b[2J", "x"}, "there is no option --\\x1b[2J; "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    const ProgramResult result = search(c.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, testing::StartsWith("vistaro: "));
    EXPECT_THAT(result.errors, HasSubstr(c.message));
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1);
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
  EXPECT_THAT(search({"--page", "9", "file"}).output, HasSubstr("  nothing on page 9\n"));
  EXPECT_THAT(search({"--page", "0010", "--per-page", "1", "file"}).output, HasSubstr("10–10 of"));
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
  const json report = searchJSON({"--kind", "pdf documents", "x"});
  ASSERT_EQ(report["groups"].size(), 1U);
  EXPECT_EQ(report["groups"][0]["title"], "PDF Documents");
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

TEST_F(SearchCommand, TakesOneFolderForEachPathAndTheRestAsWords) {
  addFile("one/a b.pdf");
  addFile("two/a b.pdf");
  const ProgramResult result =
      vistaro({"search", "--path", tree_ / "one", "--path=" + (tree_ / "two"), "a", "b"});
  EXPECT_THAT(result.output, HasSubstr("2 files in 1 group"));
  EXPECT_EQ(vistaro({"search", "a", "--path", tree_ / "one", "b"}).exitCode, 0);
}

TEST_F(SearchCommand, TakesWhatFollowsTwoDashesAsWords) {
  addFile("--raw.pdf");
  EXPECT_EQ(search({"--", "--raw"}).exitCode, 0);
}

TEST_F(SearchCommand, ResolvesLinksInThePath) {
  const std::string path = addFile("there/a.pdf");
  std::filesystem::create_directory_symlink("there", tree_ / "link");
  std::filesystem::create_symlink("loop", tree_ / "loop");
  EXPECT_THAT(vistaro({"search", "--path", tree_ / "link", "a"}).output, HasSubstr(path));
  const ProgramResult loop = vistaro({"search", "--path", tree_ / "loop", "a"});
  EXPECT_EQ(loop.exitCode, 2);
  EXPECT_THAT(loop.errors, HasSubstr("loop: "));
}

TEST_F(SearchCommand, BearsWordsOfAllSorts) {
  addFile("it's Ünï \u202E cödé 100% $HOME *.pdf");
  for (const char* words :
       {"it's", "it\"s", "UNI code", "ÜNÏ", "100%", "$HOME", "*.pdf", "\"uni", "\u202E"}) {
    SCOPED_TRACE(words);
    EXPECT_EQ(search({words}).exitCode, 0);
  }
  for (const char* words : {"?", "\\", "\xff", "a\001b", "&&", ")("}) {
    SCOPED_TRACE(words);
    EXPECT_EQ(search({words}).exitCode, 1);
  }
}

TEST_F(SearchCommand, RefusesQueriesBeyondTheLimits) {
  const std::string longest(65'536, 'a');
  const ProgramResult query = search({"kMDItemFSName == \"" + longest + "\""});
  EXPECT_EQ(query.exitCode, 2);
  EXPECT_THAT(query.errors, HasSubstr("expected at most 65536 bytes"));
  EXPECT_LT(query.errors.size(), 300U);
  const ProgramResult words = search({longest});
  EXPECT_EQ(words.exitCode, 2);
  EXPECT_THAT(words.errors, HasSubstr("too many"));
  const std::string name = "kMDItemFSName == \"";
  EXPECT_EQ(search({name + longest.substr(name.size() + 1) + "\""}).exitCode, 1);
}

TEST_F(SearchCommand, NotesWhatItCouldNotSearch) {
  addFile("a.pdf");
  const std::string gone = tree_ / "gone\nfolder";
  std::filesystem::create_directories(root_ / "Library/Application Support/Vistaro");
  write(root_ / "Library/Application Support/Vistaro/Settings.plist",
        "<plist version=\"1.0\"><dict><key>SearchFolders</key><array>"
        "<dict><key>title</key><string>Gone</string><key>path</key><string>" +
            gone +
            "</string></dict><dict><key>title</key><string>All</string><key>path</key><string>" +
            tree_.path().string() + "</string></dict></array></dict></plist>");
  const ProgramResult result = vistaro({"search", "pdf"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "vistaro: note: " + tree_.path().string() +
                               "/gone\\x0afolder: no such folder, or you may not search it\n" +
                               kWalkedWithoutIndex);
}

TEST_F(SearchCommand, NotesAttributesThatNoFileHas) {
  const ProgramResult result = search({"kMDItemSmell == 3"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            std::string("vistaro: note: no file has an attribute called kMDItemSmell\n") +
                kWalkedWithoutIndex);
}

TEST_F(SearchCommand, NotesThatItLooksAtTheNewestTenThousandAlone) {
  for (int i = 0; i <= 10'000; ++i) write(tree_ / std::to_string(i), "");
  const ProgramResult result = search({"--raw", "true"});
  EXPECT_EQ(result.errors,
            std::string(kWalkedWithoutIndex) +
                "vistaro: note: there are more hits than are looked at; older ones are left out\n");
  EXPECT_THAT(result.output, HasSubstr("10000 files in 1 group"));
}

TEST_F(SearchCommand, SaysThatTheSettingsAreDamagedRatherThanEmpty) {
  std::filesystem::create_directories(root_ / "Library/Application Support/Vistaro");
  write(root_ / "Library/Application Support/Vistaro/Settings.plist", "garbage");
  const ProgramResult result = vistaro({"search", "x"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("Settings.plist is damaged"));
}

TEST_F(SearchCommand, TellsNobodyOfFoldersThatTheUserCannotReach) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can search on behalf of others";
  addFile("closed/below/secret.pdf");
  addFile("open/a.pdf");
  std::filesystem::create_directory_symlink("closed/below", tree_ / "link");
  ASSERT_EQ(chmod((tree_ / "closed").c_str(), 0700), 0);
  for (const char* options : {"--json", "--verbose", "--raw"}) {
    std::set<std::string> answers;
    for (const char* folder : {"closed", "closed/below", "closed/none", "none", "link"}) {
      SCOPED_TRACE(std::string(options) + " " + folder);
      const std::string path = tree_ / folder;
      const ProgramResult result =
          vistaro({"search", "--user", "ann", "--path", path, options, "kMDItemFSName == \"*\""});
      EXPECT_EQ(result.exitCode, 2);
      EXPECT_EQ(result.output, "");
      EXPECT_THAT(result.errors, HasSubstr(path + ": no such folder, or ann may not search it"));
      EXPECT_THAT(result.errors, Not(HasSubstr("secret")));
    }
    for (const char* folder : {"closed", "none"}) {
      const std::string path = tree_ / folder;
      const ProgramResult result = vistaro({"search", "--user", "ann", "--path", path, "--path",
                                            tree_ / "open", options, "kMDItemFSName == \"*\""});
      EXPECT_EQ(result.exitCode, 0);
      EXPECT_THAT(result.errors,
                  HasSubstr("note: " + path + ": no such folder, or ann may not search it"));
    }
  }
}

TEST_F(SearchCommand, SearchesAsWhoeverRunsIt) {
  if (!canRunAs(2001)) GTEST_SKIP() << "only root can become others, who must reach the command";
  addFile("open/a.pdf");
  addFile("closed/a.pdf");
  ASSERT_EQ(chmod((tree_ / "closed").c_str(), 0700), 0);
  const std::string tree = tree_.path();
  EXPECT_THAT(vistaroAs(2001, {"search", "--path", tree, "pdf"}).output,
              HasSubstr("1 file in 1 group"));
  EXPECT_THAT(vistaroAs(2001, {"search", "--user", "ann", "--path", tree, "pdf"}).output,
              HasSubstr("1 file in 1 group"));
  struct Case {
    std::vector<std::string> arguments;
    int exitCode;
    const char* message;
  };
  const Case cases[] = {
      {{"--path", tree, "--user", "ben", "pdf"}, 3, "only root can search on behalf of somebody"},
      {{"--path", tree, "--user", "root", "pdf"}, 3, "only root can search on behalf of somebody"},
      {{"--path", tree + "/closed", "pdf"}, 2, "/closed: no such folder, or you may not search it"},
      {{"--path", tree + "/closed/a.pdf", "pdf"}, 2, "/closed/a.pdf: Permission denied"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    std::vector<std::string> arguments = c.arguments;
    arguments.insert(arguments.begin(), "search");
    const ProgramResult result = vistaroAs(2001, arguments);
    EXPECT_EQ(result.exitCode, c.exitCode);
    EXPECT_THAT(result.errors, HasSubstr(c.message));
    EXPECT_EQ(result.output, "");
  }
}

TEST_F(SearchCommand, RefusesAUserIdWithoutAnAccount) {
  if (!canRunAs(4242)) GTEST_SKIP() << "only root can become others, who must reach the command";
  addFile("a.pdf");
  const ProgramResult result = vistaroAs(4242, {"search", "--path", tree_.path().string(), "pdf"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("the rights of user id 4242"));
}

TEST_F(SearchCommand, ShowsTheLogOnlyWhenAsked) {
  addFile("x.pdf");
  EXPECT_EQ(search({"x"}).errors, kWalkedWithoutIndex);
  EXPECT_THAT(search({"--verbose", "x"}).errors, HasSubstr("Found 1 elements for query "));
}

}  // namespace
}  // namespace vt
