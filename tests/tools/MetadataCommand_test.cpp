#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <nlohmann/json.hpp>

#include "support/Places.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class MetadataCommand : public CommandTest {};

TEST_F(MetadataCommand, ShowsWhatIsKnownByTheNamesForPeople) {
  const ProgramResult result = vistaro({"metadata", addFile("report.pdf", 5)});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "");
  for (const char* line :
       {"\nName:                   report.pdf\n", "\nSize:                   5\n",
        "\nContent modified:       2026-11-21 00:00:00\n", "\nHidden:                 no\n",
        "\nContent type tree:      com.adobe.pdf, public.data, "}) {
    EXPECT_THAT("\n" + result.output, HasSubstr(line));
  }
  EXPECT_THAT(result.output, Not(HasSubstr("kMDItem")));
}

TEST_F(MetadataCommand, NamesAttributesAsQueriesDoWhenAsked) {
  const ProgramResult result = vistaro({"metadata", "--raw", addFile("report.pdf", 5)});
  EXPECT_THAT(result.output, StartsWith("kMDItemFSName:"));
  EXPECT_THAT(result.output, HasSubstr("\nkMDItemFSSize:                  5\n"));
}

TEST_F(MetadataCommand, ShowsWhatTheIndexerHasFoundInAFileAndBesideIt) {
  const std::string path = addFile("report.bin", 5);
  const std::string tags = "red,work";
  ASSERT_EQ(::setxattr(path.c_str(), "user.xdg.tags", tags.data(), tags.size(), 0), 0);
  EXPECT_THAT(vistaro({"metadata", path}).output, Not(HasSubstr("Tags:")));
  ASSERT_EQ(vistaro({"index", "--once", tree_.path()}).exitCode, 0);
  EXPECT_THAT(vistaro({"metadata", path}).output,
              HasSubstr("\nTags:                   red, work\n"));
}

TEST_F(MetadataCommand, ShowsDatesInLocalTime) {
  std::map<std::string, std::string> surroundings = environment();
  surroundings["TZ"] = "Asia/Tokyo";
  const ProgramResult result =
      runProgram({builtProgram("vistaro"), "metadata", addFile("report.pdf")}, surroundings);
  EXPECT_THAT(result.output, HasSubstr("2026-11-21 09:00:00\n"));
}

TEST_F(MetadataCommand, HeadsEachOfSeveralFiles) {
  const std::string first = addFile("first.txt");
  const std::string second = addFile("second.txt");
  const ProgramResult result = vistaro({"metadata", first, tree_ / "missing", second});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.output, StartsWith(first + "\nFilename:"));
  EXPECT_THAT(result.output, HasSubstr("\n\n" + second + "\nFilename:"));
  EXPECT_EQ(result.errors,
            "vistaro: " + (tree_ / "missing") + ": no such file, or it may not be read\n");
}

TEST_F(MetadataCommand, PrintsJSON) {
  const std::string path = addFile("odd\xff.pdf", 5);
  const ProgramResult result = vistaro({"metadata", "--json", path, tree_ / "missing"});
  const auto files = nlohmann::json::parse(result.output);
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(files[0]["path"], tree_ / "odd\uFFFD.pdf");
  EXPECT_EQ(files[0]["metadata"]["Size"], 5);
  EXPECT_EQ(files[0]["metadata"]["Content modified"], "2026-11-21T00:00:00Z");
  EXPECT_EQ(files[0]["metadata"]["Content type tree"][0], "com.adobe.pdf");
  EXPECT_TRUE(files[1]["metadata"].is_null());
}

TEST_F(MetadataCommand, FindsNothingForMissingFiles) {
  const ProgramResult result = vistaro({"metadata", tree_ / "missing"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
}

TEST_F(MetadataCommand, CountsTheEntriesOfAFolder) {
  addFile("folder/a");
  addFile("folder/b");
  EXPECT_THAT(vistaro({"metadata", tree_ / "folder"}).output,
              HasSubstr("\nNumber of items:        2\n"));
}

TEST_F(MetadataCommand, TakesAnyName) {
  for (const char* name : {"-.pdf", "--raw", "./[a,b]", "odd\xff\n\x1b[2J.pdf"}) {
    SCOPED_TRACE(name);
    addFile(name);
    const std::string line = "cd '" + tree_.path().string() + "' && exec " +
                             builtProgram("vistaro") + " metadata -- '" + name + "'";
    const ProgramResult result = runProgram({"sh", "-c", line}, environment());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output, Not(HasSubstr("\x1b")));
    EXPECT_THAT(result.output, Not(HasSubstr("\xff")));
  }
}

TEST_F(MetadataCommand, ShowsWhatTheUserMayReadAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can look on behalf of others";
  const std::string path = addFile("team's.txt", 5);
  ASSERT_EQ(chown(path.c_str(), 0, 3001), 0);
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  for (const char* raw : {"--json", "--raw"}) {
    SCOPED_TRACE(raw);
    EXPECT_EQ(vistaro({"metadata", raw, "--user", "ann", path}).exitCode, 0);
    const ProgramResult bens = vistaro({"metadata", raw, "--user", "ben", path});
    EXPECT_EQ(bens.exitCode, 1);
    EXPECT_THAT(bens.output, Not(HasSubstr("Size")));
  }
}

TEST_F(MetadataCommand, LooksOnBehalfOfOthersOnlyAsRoot) {
  EXPECT_EQ(vistaro({"metadata", "--user", "nobody-has-this-name", "/"}).exitCode, 2);
  if (!canRunAs(2001)) GTEST_SKIP() << "needs root and a build that others may run";
  const std::string path = addFile("a.txt");
  EXPECT_EQ(vistaroAs(2001, {"metadata", "--user", "ann", path}).exitCode, 0);
  const ProgramResult bens = vistaroAs(2001, {"metadata", "--user", "ben", path});
  EXPECT_EQ(bens.exitCode, 3);
  EXPECT_THAT(bens.errors, HasSubstr("only root can look at files on behalf of somebody else"));
}

}  // namespace
}  // namespace vt
