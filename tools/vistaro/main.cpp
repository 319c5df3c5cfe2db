#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <string_view>

#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/Terminal.h"
#include "vistaro/UsageError.h"

namespace {

/// Puts something that cannot be written into the place of standard descriptors that are closed.
/// Else the next file to be opened would take the place, and get what is printed.
void occupyStandardDescriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    // The lowest free number is given, and those below are taken.
    if (open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) _exit(3);
  }
}

struct Command {
  std::string_view name;
  void (*add)(CLI::App& app, int& status);
  bool tellsOfAll = false;
};

using namespace vt::tool;

constexpr Command kCommands[] = {
    {"search", addSearchCommand},
    {"user", addUserCommand},
    {"kinds", addKindsCommand},
    {"mime", addMimeCommand},
    {"metadata", addMetadataCommand},
    {"thumbnail", addThumbnailCommand},
    {"preview", addPreviewCommand},
    {"index", addIndexCommand},
    {"folders", addFoldersCommand},
    {"saved", addSavedCommand},
    {"settings", addSettingsCommand},
    {"links", addLinksCommand},
    {"shares", addSharesCommand},
    {"attributes", addAttributesCommand},
    {"status", addStatusCommand},
    {"doctor", addDoctorCommand},
    {"completion", addCompletionCommand, /*tellsOfAll=*/true},
    {"manual", addManualCommand, /*tellsOfAll=*/true},
};

/// Adds the command called `typed`, and all unless that is enough: to describe the options of all
/// takes longer than many a search.
void addCommands(CLI::App& app, std::string_view typed, int& status) {
  for (const Command& command : kCommands) {
    if (command.name == typed && !command.tellsOfAll) return command.add(app, status);
  }
  for (const Command& command : kCommands) command.add(app, status);
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardDescriptors();
  CLI::App app("Finds files on this server and shows only what the searching user may read.");
  app.name("vistaro");
  app.require_subcommand(1);
  app.set_version_flag("--version", "vistaro " VT_VERSION);
  app.footer(
      "Exit codes: 0 found, 1 nothing found, 2 rejected query or usage, 3 failure.\n"
      "`vistaro COMMAND --help` tells more about a command.");

  const auto environment = vt::readEnvironment();
  if (!environment) {
    printError(environment.error().text);
    return kFailure;
  }
  const vt::PlatformScope installed(vt::linuxPlatform(*environment));

  int status = kFound;
  addCommands(app, argc > 1 ? argv[1] : "", status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      printError(describeUsageError(app, error));
      return kUsage;
    }
    app.exit(error);  // prints the help or the version
    std::cout.flush();
  } catch (const std::exception& error) {
    printError(error.what());
    return kFailure;
  }
  if (std::fflush(stdout) != 0 || std::cout.fail()) {
    printError("the output could not be written");
    return kFailure;
  }
  return status;
}
