#include "vistaro/CommandOutline.h"

#include <algorithm>
#include <cctype>

namespace vt::tool {
namespace {

ArgumentKind kindOf(const std::string& placeholder) {
  if (placeholder.empty()) return ArgumentKind::kNone;
  if (placeholder == "DIR") return ArgumentKind::kFolder;
  if (placeholder == "FILE") return ArgumentKind::kFile;
  return placeholder == "USER" ? ArgumentKind::kUser : ArgumentKind::kText;
}

std::string oneLine(std::string text) {
  std::ranges::replace(text, '\n', ' ');
  return text;
}

OptionOutline outlineOf(const CLI::Option& option) {
  OptionOutline outline;
  if (option.get_positional()) {
    outline.name = option.get_name(/*positional=*/true);
  } else if (!option.get_lnames().empty()) {
    outline.flag = "--" + option.get_lnames().front();
  } else {
    outline.flag = "-" + option.get_snames().front();
  }
  // A validator adds its own words to the type; the type itself is the first.
  const std::string type = option.get_type_name();
  if (option.get_items_expected_max() > 0) outline.placeholder = type.substr(0, type.find(':'));
  outline.description = oneLine(option.get_description());
  outline.kind = kindOf(outline.placeholder);
  outline.isRequired = option.get_required();
  outline.repeats = option.get_items_expected_max() > 1;
  return outline;
}

CommandOutline outlineOf(const CLI::App& app, const std::string& path) {
  CommandOutline outline;
  outline.name = app.get_name();
  outline.path = path;
  outline.description = oneLine(app.get_description());
  for (const CLI::Option* option : app.get_options()) outline.options.push_back(outlineOf(*option));
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_group().empty()) continue;  // hidden
    std::string inner = path;
    if (!inner.empty()) inner += ' ';
    inner += command->get_name();
    outline.commands.push_back(outlineOf(*command, inner));
  }
  return outline;
}

void collect(const CommandOutline& command, std::vector<const CommandOutline*>& all) {
  all.push_back(&command);
  for (const CommandOutline& inner : command.commands) collect(inner, all);
}

}  // namespace

CommandOutline outlineOf(const CLI::App& app) { return outlineOf(app, ""); }

std::vector<const CommandOutline*> allCommands(const CommandOutline& program) {
  std::vector<const CommandOutline*> all;
  collect(program, all);
  return all;
}

}  // namespace vt::tool
