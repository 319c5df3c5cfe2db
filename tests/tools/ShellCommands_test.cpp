#include <gmock/gmock.h>

#include "tools/CommandTest.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

class ShellCommands : public CommandTest {
 protected:
  /// Where a command's output lies as a file, for a shell to read.
  std::string saved(const std::string& name, std::vector<std::string> arguments) {
    const ProgramResult result = vistaro(std::move(arguments));
    EXPECT_EQ(result.exitCode, 0);
    write(tree_ / name, result.output);
    return tree_ / name;
  }

  std::string bashOffers(const std::string& words, int at) {
    const std::string script = saved("vistaro.bash", {"completion", "bash"});
    return runProgram({"bash", "-c",
                       "source " + script + "; COMP_WORDS=(" + words + "); COMP_CWORD=" +
                           std::to_string(at) + "; _vistaro; echo -n \"${COMPREPLY[@]}\""})
        .output;
  }
  std::string fishOffers(const std::string& line) {
    const std::string script = saved("vistaro.fish", {"completion", "fish"});
    return runProgram(
               {"fish", "--no-config", "-c", "source " + script + "; complete -C '" + line + "'"},
               {{"HOME", tree_.path().string()}})
        .output;
  }
};

TEST_F(ShellCommands, CompleteInBash) {
  std::filesystem::create_directories(tree_ / "shelf");
  const std::string folder = tree_ / "she";
  EXPECT_EQ(bashOffers("vistaro fol", 1), "folders");
  EXPECT_EQ(bashOffers("vistaro folders re", 2), "remove");
  EXPECT_EQ(bashOffers("vistaro search --des", 2), "--descending");
  EXPECT_EQ(bashOffers("vistaro search --path " + folder, 3), folder + "lf");
  EXPECT_EQ(bashOffers("vistaro search --sort n", 3), "");
  EXPECT_EQ(bashOffers("vistaro user roo", 2), "root");
}

TEST_F(ShellCommands, CompleteInFish) {
  EXPECT_THAT(fishOffers("vistaro fol"), HasSubstr("folders\tShow and change"));
  EXPECT_THAT(fishOffers("vistaro folders re"), HasSubstr("remove\t"));
  EXPECT_THAT(fishOffers("vistaro search --des"), HasSubstr("--descending\t"));
}

TEST_F(ShellCommands, CompleteInZsh) {
  // Completion needs a terminal to be typed at; loading the functions tells that they are sound.
  const std::string script = saved("_vistaro", {"completion", "zsh"});
  const ProgramResult loaded =
      runProgram({"zsh", "-f", "-c",
                  "autoload -Uz compinit && compinit -D && source " + script +
                      " && print -r -- $_comps[vistaro] ${(k)functions[(I)_vistaro_folders_*]}"});
  EXPECT_EQ(loaded.exitCode, 0);
  EXPECT_THAT(loaded.errors, IsEmpty());
  EXPECT_THAT(loaded.output, HasSubstr("_vistaro "));
  EXPECT_THAT(loaded.output, HasSubstr("_vistaro_folders_remove"));
}

TEST_F(ShellCommands, RefuseAnotherShell) {
  EXPECT_EQ(vistaro({"completion", "csh"}).exitCode, 2);
  EXPECT_EQ(vistaro({"completion"}).exitCode, 2);
}

TEST_F(ShellCommands, PrintAManualPageWithEveryCommand) {
  const std::string page = saved("vistaro.8", {"manual"});
  const ProgramResult lint = runProgram({"mandoc", "-T", "lint", "-W", "error", page});
  EXPECT_EQ(lint.output + lint.errors, "");
  // Bold letters are printed twice, with a backspace between.
  const std::string text =
      runProgram({"sh", "-c", "mandoc -T ascii -O width=1000 " + page + " | sed 's/.\b//g'"})
          .output;
  for (const char* option : {"search", "folders add", "saved run", "settings unset", "doctor"}) {
    SCOPED_TRACE(option);
    EXPECT_THAT(text, HasSubstr(std::string("\n       vistaro ") + option));
  }
}

}  // namespace
}  // namespace vt
