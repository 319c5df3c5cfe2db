#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "support/Places.h"
#include "support/ReadFile.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::StartsWith;

class FoldersCommand : public CommandTest {
 protected:
  FoldersCommand() {
    for (const char* name : {"one", "two", "three"}) {
      std::filesystem::create_directories(tree_ / name);
    }
  }

  ProgramResult folders(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "folders");
    return vistaro(arguments);
  }
  void add(const std::string& name) const { ASSERT_EQ(folders({"add", tree_ / name}).exitCode, 0); }
  json listed() const { return json::parse(folders({"list", "--json"}).output); }
  std::string settingsFile() const {
    return root_ / "Library/Application Support/Vistaro/Settings.plist";
  }
};

TEST_F(FoldersCommand, ListsNothingBeforeAnyIsAdded) {
  const ProgramResult list = folders({"list"});
  EXPECT_EQ(list.exitCode, 1);
  EXPECT_EQ(list.errors, "vistaro: no search folders are set up yet\n");
}

TEST_F(FoldersCommand, StoresTheCanonicalPathAndSaysSo) {
  std::filesystem::create_directory_symlink(tree_ / "one", tree_ / "link");
  const ProgramResult added = folders({"add", tree_ / "link", "--title", "Work", "--download"});
  EXPECT_EQ(added.exitCode, 0);
  const std::string canonical = std::filesystem::canonical(tree_ / "one");
  EXPECT_EQ(added.output, canonical + " is searched as \"Work\"\n");
  EXPECT_EQ(listed(), json::parse(R"([{"title": "Work", "path": ")" + canonical +
                                  R"(", "download": "yes"}])"));
}

TEST_F(FoldersCommand, RefusesWhatCannotBeAFolder) {
  add("one");
  addFile("plain");
  const struct {
    const char* what;
    std::vector<std::string> arguments;
    const char* says;
  } cases[] = {
      {"missing", {"add", tree_ / "nope"}, "No such file or directory"},
      {"a file", {"add", tree_ / "plain"}, "Not a directory"},
      {"no title", {"add", tree_ / "two", "--title", ""}, "needs a title"},
      {"title taken", {"add", tree_ / "two", "--title", "one"}, "is called \"one\" already"},
      {"into a folder", {"add", tree_ / "two", "--group", "one"}, "is a folder and no group"},
      {"dissolve a folder", {"ungroup", "one"}, "is a folder and no group"},
      {"title not UTF-8", {"add", tree_ / "two", "--title", "\xff"}, "must be UTF-8"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const ProgramResult result = folders(c.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_THAT(result.errors, HasSubstr(c.says));
  }
  EXPECT_EQ(listed().size(), 1U);
}

TEST_F(FoldersCommand, GroupsAndDissolves) {
  for (const char* name : {"one", "two", "three"}) add(name);
  EXPECT_EQ(folders({"group", "Both", "one", "three"}).exitCode, 0);
  const json grouped = listed();
  ASSERT_EQ(grouped.size(), 2U);
  EXPECT_EQ(grouped[0]["title"], "two");
  EXPECT_EQ(grouped[1]["folders"][0]["title"], "one");
  EXPECT_EQ(grouped[1]["folders"][1]["title"], "three");
  EXPECT_EQ(folders({"ungroup", "Both"}).exitCode, 0);
  const json dissolved = listed();
  ASSERT_EQ(dissolved.size(), 3U);
  EXPECT_EQ(dissolved[1]["title"], "one");
}

TEST_F(FoldersCommand, FindsMembersOfGroupsByTitle) {
  for (const char* name : {"one", "two"}) add(name);
  folders({"group", "Both", "one", "two"});
  EXPECT_EQ(folders({"download", "two", "yes"}).exitCode, 0);
  EXPECT_EQ(listed()[0]["download"], "mixed");
  EXPECT_EQ(folders({"remove", "two"}).exitCode, 0);
  EXPECT_EQ(listed()[0]["folders"].size(), 1U);
}

TEST_F(FoldersCommand, ChangesNothingForATitleThatIsNotThere) {
  add("one");
  const std::string before = readFile(settingsFile());
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"remove", "nope"},
                                                    {"ungroup", "nope"},
                                                    {"download", "nope", "no"},
                                                    {"group", "new", "one", "nope"}}) {
    SCOPED_TRACE(arguments.front());
    const ProgramResult result = folders(arguments);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, HasSubstr("no search folder is called \"nope\""));
  }
  EXPECT_EQ(readFile(settingsFile()), before);
}

TEST_F(FoldersCommand, LeavesADamagedFileAlone) {
  std::filesystem::create_directories(std::filesystem::path(settingsFile()).parent_path());
  write(settingsFile(), "<plist><dict>");
  const ProgramResult result = folders({"add", tree_ / "one"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("is damaged"));
  EXPECT_EQ(readFile(settingsFile()), "<plist><dict>");
}

TEST_F(FoldersCommand, WaitsForAnotherCommandAndThenGivesUp) {
  add("one");
  const int lock = ::open((settingsFile() + ".lock").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(lock, 0);
  ASSERT_EQ(::flock(lock, LOCK_EX), 0);
  const ProgramResult result = folders({"add", tree_ / "two"});
  ::close(lock);
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.errors, "vistaro: another command is changing the settings; try again\n");
  EXPECT_EQ(listed().size(), 1U);
}

TEST_F(FoldersCommand, LosesNoChangeOfCommandsThatRunTogether) {
  std::string script;
  for (const char* name : {"one", "two", "three"}) {
    script += builtProgram("vistaro") + " folders add '" + std::string(tree_ / name) + "' & ";
  }
  const ProgramResult together = runProgram({"sh", "-c", script + "wait"}, environment());
  EXPECT_EQ(together.errors, "");
  EXPECT_EQ(listed().size(), 3U);
}

TEST_F(FoldersCommand, NamesWhatASearchLooksThrough) {
  for (const char* name : {"one", "two"}) add(name);
  addFile("one/report.txt");
  addFile("two/report.txt");
  const ProgramResult one = vistaro({"search", "--folder", "one", "report"});
  EXPECT_EQ(one.exitCode, 0);
  EXPECT_THAT(one.output, HasSubstr("one/report.txt"));
  EXPECT_THAT(one.output, testing::Not(HasSubstr("two/report.txt")));
  EXPECT_EQ(vistaro({"search", "--folder", "nope", "report"}).exitCode, 1);
}

}  // namespace
}  // namespace vt
