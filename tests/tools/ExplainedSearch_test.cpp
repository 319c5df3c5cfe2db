#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

class ExplainedSearch : public CommandTest {
 protected:
  ExplainedSearch() {
    addFile("open.pdf", 10);
    addFile("closed/hidden.pdf", 20);
    addFile("mine.pdf", 30);
    chmod((tree_ / "closed").c_str(), 0700);
    chmod((tree_ / "mine.pdf").c_str(), 0640);
  }
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can have a search explained";
  }

  json explained(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"--explain", "--json"});
    const ProgramResult result = search(std::move(arguments));
    EXPECT_EQ(result.errors, "");
    return json::parse(result.output);
  }
};

TEST_F(ExplainedSearch, NamesTheReasonForEachHitThatIsDropped) {
  const json report = explained({"--user", "ann", "--raw", "kMDItemFSName == \"*.pdf\""});
  EXPECT_EQ(report["candidates"], 3);
  EXPECT_EQ(report["hits"], 1);
  std::map<std::string, std::string> reasons;
  for (const json& drop : report["dropped"]) reasons[drop["path"]] = drop["reason"];
  EXPECT_EQ(reasons[tree_ / "closed/hidden.pdf"],
            tree_ / "closed" + " may not be searched (drwx------ 0:0)");
  EXPECT_EQ(reasons[tree_ / "mine.pdf"], "it may not be read (-rw-r----- 0:0)");
  EXPECT_EQ(reasons.size(), 2U);
}

TEST_F(ExplainedSearch, TellsHowManyFilesEachStepLeft) {
  ASSERT_EQ(vistaro({"index", "--once", tree_.path()}).exitCode, 0);
  const json report = explained({"--raw", "kMDItemFSName == \"*.pdf\" && kMDItemFSSize > 15"});
  EXPECT_TRUE(report["walkedBecause"].is_null());
  EXPECT_EQ(report["steps"], json::parse(R"([
    {"text": "kMDItemFSSize > 15", "asked": 4, "left": 3},
    {"text": "kMDItemFSName == \"*.pdf\"", "asked": 3, "left": 2},
    {"text": "in the folders, and readable", "asked": 2, "left": 2}])"));
  EXPECT_THAT(report["dropped"], IsEmpty());
}

TEST_F(ExplainedSearch, SaysWhyTheFilesWereWalked) {
  const json report = explained({"--raw", "kMDItemFSName == \"*.pdf\""});
  EXPECT_EQ(report["walkedBecause"], "there is no index");
  EXPECT_EQ(report["steps"][0]["left"], 3);
}

TEST_F(ExplainedSearch, ShowsTheQueryAsItWasUnderstood) {
  const ProgramResult result = search(
      {"--explain", "--raw", "(kMDItemFSName=\"a*\" || !kMDItemFSName=\"b*\") && kMDItemFSSize>1"});
  EXPECT_THAT(result.output, HasSubstr("Understood as\n"
                                       "  &&\n"
                                       "    ||\n"
                                       "      kMDItemFSName == \"a*\"\n"
                                       "      !\n"
                                       "        kMDItemFSName == \"b*\"\n"
                                       "    kMDItemFSSize > 1\n"));
  EXPECT_THAT(result.output, HasSubstr("are shown to root"));
}

TEST_F(ExplainedSearch, BearsAQueryOfGreatDepth) {
  std::string query;
  for (int i = 0; i < 120; ++i) query += "!(";
  query += "kMDItemFSSize > 1" + std::string(120, ')');
  EXPECT_EQ(search({"--explain", "--raw", query}).exitCode, 0);
}

TEST_F(ExplainedSearch, PointsAtTheMistakeInAQuery) {
  const ProgramResult result = search({"--explain", "--raw", "kMDItemFSName =="});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(result.errors, HasSubstr("^"));
}

TEST_F(ExplainedSearch, SaysWhichFolderCannotBeSearched) {
  const ProgramResult result = vistaro(
      {"search", "--explain", "--user", "ann", "--path", tree_ / "missing", "--raw", "true"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_THAT(result.errors, HasSubstr("missing: no such folder, or ann may not search it"));
  EXPECT_EQ(result.output, "");
}

TEST_F(ExplainedSearch, KnowsAUserWhoMayNotReadTheAccounts) {
  chmod(root_.path().c_str(), 0701);  // and whose search has the group of root still
  const json report = explained({"--user", "ann", "--raw", "kMDItemFSName == \"*.pdf\""});
  EXPECT_EQ(report["hits"], 1);
}

TEST_F(ExplainedSearch, IsForRootAlone) {
  if (!canRunAs(2001)) GTEST_SKIP() << "nobody else can run the command";
  const ProgramResult result =
      vistaroAs(2001, {"search", "--explain", "--path", tree_.path(), "--raw", "true"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("only root can have a search explained"));
  EXPECT_EQ(result.output, "");
}

}  // namespace
}  // namespace vt
