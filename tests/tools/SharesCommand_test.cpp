#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;

class SharesCommand : public CommandTest {
 protected:
  SharesCommand() {
    for (const char* folder : {"etc/samba", "etc/netatalk"}) {
      std::filesystem::create_directories(root_.path() / folder);
    }
  }
  void writeBoth() const {
    write(root_ / "etc/samba/smb.conf",
          "[Docs]\npath = /srv/docs\n[Bücher]\npath = /srv/Bücher\n[u]\npath = /home/%U\n"
          "[none]\ncomment = x\n[homes]\n");
    write(root_ / "etc/netatalk/afp.conf", "[Documents]\n  path = /srv/docs\n");
  }
};

TEST_F(SharesCommand, ListsEachFolderWithItsNames) {
  writeBoth();
  const ProgramResult result = vistaro({"shares"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output,
            "Docs                    /srv/docs\n"
            "    SMB  Docs\n"
            "    AFP  Documents\n"
            "Bücher                  /srv/Bücher\n"
            "    SMB  Bücher\n");
  EXPECT_EQ(
      result.errors,
      "vistaro: note: the Samba share \"u\" is left out: its path \"/home/%U\" depends on who "
      "asks\n"
      "vistaro: note: the Samba share \"none\" is left out: it has no path\n");
}

TEST_F(SharesCommand, PrintsJSONForPrograms) {
  writeBoth();
  const ProgramResult result = vistaro({"shares", "--json"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(nlohmann::json::parse(result.output), nlohmann::json::parse(R"([
      {"name": "Docs", "path": "/srv/docs", "smbShared": true, "smbName": "Docs",
       "afpShared": true, "afpName": "Documents"},
      {"name": "Bücher", "path": "/srv/Bücher", "smbShared": true, "smbName": "Bücher",
       "afpShared": false, "afpName": null}])"));
}

TEST_F(SharesCommand, FindsNothingWhereNothingIsShared) {
  const ProgramResult result = vistaro({"shares"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "vistaro: no folder is shared over SMB or AFP\n");
  EXPECT_EQ(vistaro({"shares", "--json"}).output, "[]\n");
}

TEST_F(SharesCommand, TellsWhatIsWrongWithABrokenConfiguration) {
  write(root_ / "etc/samba/smb.conf", "[Docs\n");
  write(root_ / "etc/netatalk/afp.conf", "[a]\nnonsense\x1b[2J\n");
  const ProgramResult result = vistaro({"shares"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.errors,
              HasSubstr("vistaro: note: Samba's shares are left out: testparm could "
                        "not read " +
                        (root_ / "etc/samba/smb.conf") + ": Error loading services.\n"));
  EXPECT_THAT(result.errors,
              HasSubstr("afp.conf, line 2: it is neither a section nor a parameter\n"));
}

TEST_F(SharesCommand, ShowsNoControlCharactersOfNames) {
  write(root_ / "etc/netatalk/afp.conf", "[a\x1b]\npath = /srv/\x07\n[\x1b]\npath = x\n");
  const ProgramResult result = vistaro({"shares"});
  EXPECT_THAT(result.output, HasSubstr("a\\x1b"));
  EXPECT_THAT(result.output, HasSubstr("/srv/\\x07\n"));
  EXPECT_THAT(result.errors, HasSubstr("the AFP volume \"\\x1b\" is left out"));
}

TEST_F(SharesCommand, IsToldOfByTheDoctor) {
  EXPECT_THAT(vistaro({"doctor"}).output,
              HasSubstr("ok     no folder is shared over SMB or AFP\n"));
  writeBoth();
  const ProgramResult result = vistaro({"doctor"});
  EXPECT_EQ(result.exitCode, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("ok     2 folders are shared over SMB or AFP\n"));
  EXPECT_THAT(result.output,
              HasSubstr("note   the Samba share \"none\" is left out: it has no path"));
}

}  // namespace
}  // namespace vt
