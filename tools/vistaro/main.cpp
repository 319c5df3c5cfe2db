#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <memory>

#include "platform/Platform.h"
#include "platform/linux/LinuxPlatform.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"

int main(int argc, char** argv) {
  using namespace vt::tool;
  CLI::App app("Finds files on this server and shows only what the searching user may read.");
  app.name("vistaro");
  app.require_subcommand(1);
  app.set_version_flag("--version", "vistaro " VT_VERSION);
  app.footer(
      "Exit codes: 0 found, 1 nothing found, 2 rejected query or usage, 3 failure.\n"
      "`vistaro COMMAND --help` tells more about a command.");

  const auto platform = vt::linuxPlatform();
  if (!platform) {
    fmt::print(stderr, "vistaro: {}\n", platform.error().text);
    return kFailure;
  }
  const vt::PlatformScope installed(*platform);

  int status = kFound;
  addSearchCommand(app, status);
  addUserCommand(app, status);
  addKindsCommand(app, status);
  addDoctorCommand(app, status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kFound : kUsage;
  } catch (const std::exception& error) {
    fmt::print(stderr, "vistaro: {}\n", error.what());
    return kFailure;
  }
  if (std::fflush(stdout) != 0) {
    fmt::print(stderr, "vistaro: the output could not be written\n");
    return kFailure;
  }
  return status;
}
