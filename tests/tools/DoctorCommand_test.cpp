#include <gmock/gmock.h>
#include <unistd.h>

#include "support/Places.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;

class DoctorCommand : public CommandTest {};

TEST_F(DoctorCommand, FindsNoFaultInASoundInstallation) {
  const ProgramResult result = vistaro({"doctor"});
  EXPECT_EQ(result.exitCode, 0) << result.output;
  EXPECT_THAT(result.output, HasSubstr("ok     content types are readable\n"));
  EXPECT_THAT(result.output, HasSubstr("ok     administrators: ben\n"));
  EXPECT_THAT(result.output, HasSubstr("/etc/shadow cannot be read: nobody can log in"));
}

TEST_F(DoctorCommand, TellsHowThumbnailsAreMade) {
  EXPECT_THAT(vistaro({"doctor"}).output,
              testing::ContainsRegex("ok     thumbnails are made behind .*seccomp|"
                                     "note   thumbnails: files cannot be decoded"));
}

TEST_F(DoctorCommand, TellsWhetherSearchesUseTheIndex) {
  EXPECT_THAT(vistaro({"doctor"}).output, HasSubstr("note   there is no index"));
  addFile("a.pdf");
  ASSERT_EQ(vistaro({"index", "--once", tree_.path()}).exitCode, 0);
  EXPECT_THAT(vistaro({"doctor"}).output,
              HasSubstr("is fresh: 1 files below 1 folder; no indexer runs\n"));
  const std::string manifest = root_ / "var/lib/vistaro/index/manifest";
  write(manifest, "damaged");
  const ProgramResult damaged = vistaro({"doctor"});
  EXPECT_EQ(damaged.exitCode, 3);
  EXPECT_THAT(damaged.output, HasSubstr("fault  the index is not used: " + manifest));
}

TEST_F(DoctorCommand, NamesDamagedSettings) {
  std::filesystem::create_directories(root_ / "Library/Application Support/Vistaro");
  write(root_ / "Library/Application Support/Vistaro/Settings.plist", "<plist><dict><key>");
  const ProgramResult result = vistaro({"doctor"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.output, HasSubstr("Settings.plist is damaged ("));
}

TEST_F(DoctorCommand, WarnsOfAdministratorsByFullName) {
  write(root_ / "etc/group", "admin:x:80:Ann Other\n");
  EXPECT_THAT(vistaro({"doctor"}).output,
              HasSubstr("note   \"ann\" is an administrator by full name (\"Ann Other\")"));
}

TEST_F(DoctorCommand, WarnsOfAGroupThatDoesNotFit) {
  std::string members;
  for (int i = 0; i < 200; ++i) members += (i ? ",member" : "member") + std::to_string(i);
  write(root_ / "etc/group", "sudo:x:27:" + members + "\n");
  const ProgramResult result = vistaro({"doctor"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.output, HasSubstr("fault  the group \"sudo\" has too many members"));
}

TEST_F(DoctorCommand, MissesResources) {
  const ProgramResult result = runProgram(
      {builtProgram("vistaro"), "doctor"},
      {{"VISTARO_ROOT", root_.path().string()}, {"VISTARO_RESOURCES", tree_.path().string()}});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.output, HasSubstr("fault  types.tsv is missing or damaged\n"));
  EXPECT_THAT(result.output, HasSubstr("fault  attributes.tsv is missing or damaged\n"));
}

}  // namespace
}  // namespace vt
