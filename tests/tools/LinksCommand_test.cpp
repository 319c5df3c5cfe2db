#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;

/// A tree that afp.conf shares as "Work".
class LinksCommand : public CommandTest {
 protected:
  LinksCommand() {
    std::filesystem::create_directories(root_.path() / "etc/netatalk");
    write(root_ / "etc/netatalk/afp.conf", "[Work]\npath = " + tree_.path().string() + "\n");
    vistaro({"settings", "set", "serverName", "srv"});
  }
};

TEST_F(LinksCommand, TellsTheLinksOfFilesInASearchFolder) {
  const std::string file = addFile("a b.txt");
  ASSERT_EQ(vistaro({"folders", "add", tree_.path().string()}).exitCode, 0);
  const ProgramResult result = vistaro({"links", file});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output,
            file + "\n    AFP      afp://srv/Work/a b.txt\n    local    urlrunner://file//" + file +
                "\n");
  EXPECT_EQ(result.errors, "");
}

TEST_F(LinksCommand, TakesAFolderForASearchFolder) {
  const std::string file = addFile("sub/letter.txt");
  const ProgramResult result = vistaro({"links", "--path", tree_ / "sub", "--json", file});
  EXPECT_EQ(result.exitCode, 0);
  const auto links = nlohmann::json::parse(result.output);
  EXPECT_EQ(links[0]["afp"], "afp://srv/Work/sub/letter.txt");
  EXPECT_EQ(links[0]["smb"], nullptr);
  EXPECT_EQ(links[0]["path"], file);
}

TEST_F(LinksCommand, GivesTypedAddressesToEveryClient) {
  const std::string file = addFile("letter.txt");
  vistaro({"folders", "add", tree_.path().string(), "--title", "Work"});
  const std::string settings = root_ / "Library/Application Support/Vistaro/Settings.plist";
  // As an administration page stores what was typed.
  ASSERT_EQ(
      runProgram({"sed", "-i",
                  "s|<false/>|<true/><key>smbURLPath</key><string>smb://nas/w</string>|", settings})
          .exitCode,
      0);
  const ProgramResult result = vistaro({"links", file});
  EXPECT_THAT(result.output, HasSubstr("SMB      smb://nas/w/letter.txt\n"));
  EXPECT_THAT(result.output, HasSubstr("Windows  file://///nas/w\n"));
}

TEST_F(LinksCommand, SaysWhatCannotBeReached) {
  const std::string file = addFile("letter.txt");
  const ProgramResult outside = vistaro({"links", file});
  EXPECT_EQ(outside.exitCode, 1);
  EXPECT_EQ(outside.output, "");
  EXPECT_EQ(outside.errors, "vistaro: " + file + ": in no search folder that is shared\n");
  const ProgramResult missing = vistaro({"links", tree_ / "nope"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_EQ(missing.errors,
            "vistaro: " + (tree_ / "nope") + ": no such file, or it may not be read\n");
  EXPECT_EQ(vistaro({"links"}).exitCode, 2);
  EXPECT_EQ(vistaro({"links", "--path", tree_ / "nope", file}).exitCode, 2);
}

}  // namespace
}  // namespace vt
