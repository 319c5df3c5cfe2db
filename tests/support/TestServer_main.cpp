// A server without pages: starts up as the web application does, says what startup answered, and
// then only runs its loop until its standard input ends.

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cstdio>

#include "platform/ServiceDiscovery.h"
#include "platform/linux/ServerPlatform.h"
#include "settings/VTSettings.h"

int main() {
  const auto environment = vt::readEnvironment();
  if (!environment) {
    fmt::print(stderr, "{}\n", environment.error().text);
    return 3;
  }
  const vt::PlatformScope installed(vt::serverPlatform(*environment));
  const bool hasStarted = vt::VTSettings::sharedInstance()->finishStartupOfServer();
  fmt::print("startup answered {}\n", hasStarted ? "YES" : "NO");
  std::fflush(stdout);
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (poll(&input, 1, 20) == 0) vt::Platform::current().serviceDiscovery().processEvents();
  return 0;
}
