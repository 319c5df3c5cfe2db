#include <fmt/format.h>

#include <memory>
#include <string>

#include "directory/VTUser.h"
#include "kinds/VTSearchKind.h"
#include "saved/VTSavedSearch.h"
#include "scopes/VTSearchFolder.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

void show(std::string_view label, const std::string& text) {
  fmt::print("{:<18}{}\n", label, printable(text));
}

std::string groupList(const VTUser& user) {
  std::string text;
  for (const std::int32_t* group = user.groups(); group && *group >= 0; ++group) {
    text += fmt::format("{}{}", text.empty() ? "" : ", ", *group);
  }
  return text.empty() ? "none" : text;
}

int runUser(const std::string& name) {
  const std::shared_ptr<VTUser> user = VTUser::userWithName(name);
  if (!user) {
    printError(fmt::format("no user is called \"{}\"", printable(name)));
    return kNothingFound;
  }
  const auto folder = user->defaultSearchFolder();
  const auto kind = user->defaultSearchKind();
  show("User", user->username());
  show("Full name", user->fullname().value_or("none"));
  show("User id", std::to_string(user->uid()));
  show("Primary group id", std::to_string(user->gid()));
  show("Further group ids", groupList(*user));
  show("Administrator", user->administrator() ? "yes" : "no");
  show("Results per page", std::to_string(user->resultsPerPage().integerValue()));
  show("Default folder", folder ? folder->title().value_or("none") : "none");
  show("Default kind", kind ? kind->title() : "none");
  show("Saved searches", std::to_string(user->savedSearches()->size()));
  return kFound;
}

}  // namespace

void addUserCommand(CLI::App& app, int& status) {
  auto name = std::make_shared<std::string>();
  CLI::App* command =
      app.add_subcommand("user", "Show a user as the server sees them: ids, groups, preferences");
  command->add_option("name", *name, "Login name")->type_name("USER")->required();
  command->callback([name, &status] { status = runUser(*name); });
}

}  // namespace vt::tool
