#include <fmt/format.h>

#include "vistaro/Commands.h"
#include "vistaro/Completions.h"
#include "vistaro/Exit.h"
#include "vistaro/ManualPage.h"

namespace vt::tool {

void addCompletionCommand(CLI::App& app, int& status) {
  auto shell = std::make_shared<std::string>();
  CLI::App* command =
      app.add_subcommand("completion", "Print the script that completes this command in a shell");
  command->add_option("shell", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  command->callback([shell, &app, &status] {
    const CommandOutline program = outlineOf(app);
    const auto completions = *shell == "bash"  ? bashCompletions
                             : *shell == "zsh" ? zshCompletions
                                               : fishCompletions;
    fmt::print("{}", completions(program));
    status = kFound;
  });
}

void addManualCommand(CLI::App& app, int& status) {
  CLI::App* command =
      app.add_subcommand("manual", "Print the manual page: vistaro manual | man -l -");
  command->callback([&app, &status] {
    fmt::print("{}", manualPage(outlineOf(app), VT_VERSION));
    status = kFound;
  });
}

}  // namespace vt::tool
