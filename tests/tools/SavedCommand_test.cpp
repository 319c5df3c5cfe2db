#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class SavedCommand : public CommandTest {
 protected:
  ProgramResult saved(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "saved");
    return vistaro(arguments);
  }
};

TEST_F(SavedCommand, KeepsSearchesForEachUser) {
  EXPECT_EQ(saved({"add", "Reports", "report", "--user", "ann"}).exitCode, 0);
  const json ann = json::parse(saved({"list", "--user", "ann", "--json"}).output);
  ASSERT_EQ(ann.size(), 1U);
  EXPECT_EQ(ann[0]["title"], "Reports");
  EXPECT_THAT(ann[0]["query"].get<std::string>(), HasSubstr("kMDItemFSName == \"*report*\"cd"));
  EXPECT_EQ(saved({"list", "--user", "ben"}).exitCode, 1);
}

TEST_F(SavedCommand, ReplacesTheOneWithTheSameTitle) {
  saved({"add", "Mine", "--user", "ann", "kMDItemFSName == \"a\""});
  saved({"add", "Mine", "--user", "ann", "kMDItemFSName == \"b\""});
  const json searches = json::parse(saved({"list", "--user", "ann", "--json"}).output);
  ASSERT_EQ(searches.size(), 1U);
  EXPECT_EQ(searches[0]["query"], "kMDItemFSName == \"b\"");
}

TEST_F(SavedCommand, RunsWithTheRightsOfItsOwnerInItsFolder) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root";
  for (const char* name : {"in", "out"}) std::filesystem::create_directories(tree_ / name);
  std::filesystem::permissions(tree_.path(), std::filesystem::perms(0755));
  addFile("in/report.txt");
  addFile("out/report.txt");
  std::filesystem::permissions(addFile("in/secret report.txt"), std::filesystem::perms(0600));
  vistaro({"folders", "add", tree_ / "in"});
  vistaro({"folders", "add", tree_ / "out"});
  ASSERT_EQ(saved({"add", "Mine", "report", "--folder", "in", "--user", "ann"}).exitCode, 0);
  const ProgramResult run = saved({"run", "Mine", "--user", "ann"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("in/report.txt"));
  EXPECT_THAT(run.output, Not(HasSubstr("secret")));
  EXPECT_THAT(run.output, Not(HasSubstr("out/")));
}

TEST_F(SavedCommand, SaysWhatIsNotThere) {
  EXPECT_EQ(saved({"remove", "Mine", "--user", "ann"}).errors,
            "vistaro: ann has no saved search called \"Mine\"\n");
  EXPECT_EQ(saved({"run", "Mine", "--user", "ann"}).exitCode, 1);
  EXPECT_EQ(saved({"list", "--user", "zoe"}).exitCode, 2);
  EXPECT_EQ(saved({"add", "", "x", "--user", "ann"}).exitCode, 2);
  EXPECT_EQ(saved({"add", "Mine", "x", "--folder", "nope", "--user", "ann"}).exitCode, 1);
  EXPECT_EQ(saved({"list", "--user", "ann"}).exitCode, 1);
}

TEST_F(SavedCommand, RemovesOne) {
  saved({"add", "Mine", "x", "--user", "ann"});
  EXPECT_EQ(saved({"remove", "Mine", "--user", "ann"}).exitCode, 0);
  EXPECT_EQ(saved({"list", "--user", "ann"}).exitCode, 1);
}

}  // namespace
}  // namespace vt
