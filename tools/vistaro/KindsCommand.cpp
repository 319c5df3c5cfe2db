#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "kinds/VTSearchKind.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

int runKinds(bool withTypes) {
  std::vector<std::shared_ptr<VTSearchKind>> kinds = VTSearchKind::allSearchKinds()->elements();
  std::ranges::stable_sort(kinds, {}, [](const auto& kind) { return kind->sortorder(); });
  if (kinds.empty()) {
    printError("the kinds could not be read; `vistaro doctor` tells more");
    return kFailure;
  }
  const Terminal terminal = Terminal::standardOutput();
  for (const auto& kind : kinds) {
    fmt::print("{}  {}{}\n", terminal.bold(padded(kind->title(), 22)),
               kind->defaultView() == 1 ? "thumbnails" : "list",
               kind == VTSearchKind::defaultKind() ? ", for everything else" : "");
    if (!withTypes || !kind->types()) continue;
    for (const Value& type : *kind->types()) {
      if (const auto* identifier = type.get<std::string>()) {
        fmt::print("    {}\n", printable(*identifier));
      }
    }
  }
  return kFound;
}

}  // namespace

void addKindsCommand(CLI::App& app, int& status) {
  auto withTypes = std::make_shared<bool>(false);
  CLI::App* command =
      app.add_subcommand("kinds", "List the kinds under which files are grouped, in their order");
  command->add_flag("--types", *withTypes, "Also list the content types of each kind");
  command->callback([withTypes, &status] { status = runKinds(*withTypes); });
}

}  // namespace vt::tool
