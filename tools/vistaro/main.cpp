#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>

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

}  // namespace

int main(int argc, char** argv) {
  using namespace vt::tool;
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
  addSearchCommand(app, status);
  addUserCommand(app, status);
  addKindsCommand(app, status);
  addMimeCommand(app, status);
  addMetadataCommand(app, status);
  addThumbnailCommand(app, status);
  addPreviewCommand(app, status);
  addIndexCommand(app, status);
  addFoldersCommand(app, status);
  addSavedCommand(app, status);
  addSettingsCommand(app, status);
  addLinksCommand(app, status);
  addSharesCommand(app, status);
  addAttributesCommand(app, status);
  addStatusCommand(app, status);
  addDoctorCommand(app, status);
  addCompletionCommand(app, status);
  addManualCommand(app, status);
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
