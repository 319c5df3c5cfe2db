#include <fmt/format.h>

#include "foundation/NSLog.h"
#include "vistaro/Checkup.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

std::string mark(Finding finding, const Terminal& terminal) {
  switch (finding) {
    case Finding::kOk:
      return terminal.good("ok   ");
    case Finding::kNote:
      return terminal.warning("note ");
    case Finding::kFault:
      return terminal.bad("fault");
  }
  return {};
}

int runDoctor() {
  const LogRedirection quiet([](std::string_view) {});  // each check says itself what it found
  const Terminal terminal = Terminal::standardOutput();
  int faults = 0;
  for (const auto check : {checkIdentity, checkResources, checkAccounts, checkPasswords,
                           checkSettings, checkShares, checkIndex, checkExtraction, checkImages}) {
    for (const Diagnosis& diagnosis : check()) {
      fmt::print("{}  {}\n", mark(diagnosis.finding, terminal), printable(diagnosis.text));
      faults += diagnosis.finding == Finding::kFault;
    }
  }
  return faults == 0 ? kFound : kFailure;
}

}  // namespace

void addDoctorCommand(CLI::App& app, int& status) {
  CLI::App* command = app.add_subcommand(
      "doctor", "Tell what is installed, what is missing, and what would surprise");
  command->callback([&status] { status = runDoctor(); });
}

}  // namespace vt::tool
