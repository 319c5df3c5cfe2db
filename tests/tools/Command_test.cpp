#include <gmock/gmock.h>

#include "support/Places.h"
#include "tools/CommandTest.h"
#include "vistaro/Terminal.h"

namespace vt {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Command : public CommandTest {};

TEST_F(Command, HelpsEverywhere) {
  for (const char* command :
       {"search", "user", "kinds", "mime", "metadata", "attributes", "status", "folders", "saved",
        "settings", "links", "shares", "doctor", "completion", "manual"}) {
    SCOPED_TRACE(command);
    const ProgramResult result = vistaro({command, "--help"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("--help"));
  }
  EXPECT_THAT(vistaro({"--help"}).output, HasSubstr("Exit codes"));
  EXPECT_THAT(vistaro({"--version"}).output, HasSubstr("vistaro "));
}

TEST_F(Command, RefusesToGuessACommand) {
  const ProgramResult none = vistaro({});
  EXPECT_EQ(none.exitCode, 2);
  EXPECT_THAT(none.errors, StartsWith("vistaro: name a command: search, user, "));
  EXPECT_THAT(none.errors, EndsWith(" or manual; `vistaro --help` tells more\n"));
  const ProgramResult unknown = vistaro({"serach", "x"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_EQ(unknown.errors,
            "vistaro: there is no command \"serach\"; `vistaro --help` tells more\n");
  EXPECT_EQ(vistaro({"folders"}).errors,
            "vistaro: name what to do: list, add, remove, group, ungroup or download; "
            "`vistaro folders --help` tells more\n");
  EXPECT_EQ(vistaro({"folders", "ad"}).errors,
            "vistaro: there is no command \"folders ad\"; `vistaro folders --help` tells more\n");
  EXPECT_EQ(vistaro({"user", "ann", "ben"}).errors,
            "vistaro: \"ben\" is one argument too many; `vistaro user --help` tells more\n");
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
  for (const char* command : {"kinds >/dev/full", "kinds --types >/dev/full", "--help >/dev/full",
                              "user ann >/dev/full", "kinds >&-", "kinds <&- >&-"}) {
    SCOPED_TRACE(command);
    const ProgramResult result =
        runProgram({"sh", "-c", builtProgram("vistaro") + " " + command}, environment());
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.errors, HasSubstr("could not be written"));
  }
}

TEST_F(Command, KeepsItsExitCodeWhenErrorsCannotBeWritten) {
  for (const char* errors : {" 2>/dev/full", " 2>&-"}) {
    for (const auto& [command, exitCode] :
         {std::pair("serach", 2), std::pair("user nobody-has-this-name", 1),
          std::pair("search --path /does/not/exist x", 2), std::pair("kinds >/dev/full", 3)}) {
      SCOPED_TRACE(std::string(command) + errors);
      const std::string line = builtProgram("vistaro") + " " + command + errors;
      EXPECT_EQ(runProgram({"sh", "-c", line}, environment()).exitCode, exitCode);
    }
  }
}

TEST_F(Command, ColoursOnlyATerminal) {
  const std::string line = builtProgram("vistaro") + " kinds";
  std::map<std::string, std::string> surroundings = environment();
  const auto onTerminal = [&](const std::string& term) {
    surroundings["TERM"] = term;
    return runProgram({"script", "-qec", line, "/dev/null"}, surroundings).output;
  };
  EXPECT_THAT(onTerminal("xterm"), HasSubstr("\x1b[1mDocuments"));
  EXPECT_THAT(onTerminal("dumb"), Not(HasSubstr("\x1b")));
  EXPECT_THAT(vistaro({"kinds"}).output, Not(HasSubstr("\x1b")));
  surroundings["NO_COLOR"] = "1";
  EXPECT_THAT(onTerminal("xterm"), Not(HasSubstr("\x1b")));
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
