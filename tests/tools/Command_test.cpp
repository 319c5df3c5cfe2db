#include <gmock/gmock.h>

#include "tools/CommandTest.h"
#include "vistaro/Terminal.h"

namespace vt {
namespace {

using testing::HasSubstr;

class Command : public CommandTest {};

TEST_F(Command, HelpsEverywhere) {
  for (const char* command : {"search", "user", "kinds", "doctor"}) {
    SCOPED_TRACE(command);
    const ProgramResult result = vistaro({command, "--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("--help"));
  }
  EXPECT_THAT(vistaro({"--help"}).output, HasSubstr("Exit codes"));
  EXPECT_THAT(vistaro({"--version"}).output, HasSubstr("vistaro "));
}

TEST_F(Command, RefusesToGuessACommand) {
  EXPECT_EQ(vistaro({}).exitCode, 2);
  EXPECT_EQ(vistaro({"serach", "x"}).exitCode, 2);
}

TEST_F(Command, ShowsAUserAsTheServerSeesThem) {
  const ProgramResult ann = vistaro({"user", "ann"});
  EXPECT_EQ(ann.exitCode, 0);
  EXPECT_THAT(ann.output, HasSubstr("Ann Other"));
  EXPECT_THAT(ann.output, HasSubstr("Further group ids 3001\n"));
  EXPECT_THAT(ann.output, HasSubstr("Administrator     no\n"));
  EXPECT_THAT(vistaro({"user", "ben"}).output, HasSubstr("Administrator     yes\n"));
  EXPECT_EQ(vistaro({"user", "nobody-has-this-name"}).exitCode, 1);
}

TEST_F(Command, ListsTheKinds) {
  const ProgramResult kinds = vistaro({"kinds", "--types"});
  EXPECT_EQ(kinds.exitCode, 0);
  EXPECT_THAT(kinds.output, HasSubstr("Images"));
  EXPECT_THAT(kinds.output, HasSubstr("    com.adobe.pdf\n"));
}

TEST_F(Command, RefusesARootThatOthersMayWrite) {
  std::filesystem::permissions(root_.path(), std::filesystem::perms(0777));
  const ProgramResult result = vistaro({"kinds"});
  EXPECT_EQ(result.exitCode, geteuid() == 0 ? 3 : 0);
}

TEST_F(Command, TellsWhenTheOutputCannotBeWritten) {
  const ProgramResult result =
      runProgram({"sh", "-c", std::string(VT_PROGRAM) + " kinds >/dev/full"},
                 {{"VISTARO_ROOT", root_.path().string()}, {"VISTARO_RESOURCES", VT_RESOURCES}});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.errors, HasSubstr("could not be written"));
}

TEST(Terminal, ShowsForeignTextOnOneLine) {
  struct Case {
    const char* what;
    const char* bytes;
    const char* shown;
  };
  const Case cases[] = {
      {"plain", "Übersicht.pdf", "Übersicht.pdf"},
      {"line feed and escape", "a\n\x1b[2J", "a\\x0a\\x1b[2J"},
      {"delete", "a\x7f", "a\\x7f"},
      {"eight-bit control",
       "a\xc2\x9b"
       "31m",
       "a\\x9b31m"},
      {"no break space stays", "a\xc2\xa0z", "a\xc2\xa0z"},
      {"no UTF-8", "a\xff", "a\uFFFD"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(tool::printable(c.bytes), c.shown);
  }
}

}  // namespace
}  // namespace vt
