#include <fmt/format.h>

#include <string>

#include "vistaro/Completions.h"

namespace vt::tool {
namespace {

std::string quoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') result += '\\';
    result += c;
  }
  return result + "'";
}

std::string namesOf(const CommandOutline& command) {
  std::string names;
  for (const CommandOutline& inner : command.commands) names += " " + inner.name;
  return names;
}

// Holds while what was typed so far is this command, and none of its own commands yet.
std::string conditionFor(const CommandOutline& command) {
  if (command.path.empty()) return "__fish_use_subcommand";
  std::string condition;
  std::string words = command.path;
  for (std::size_t blank = 0; blank != std::string::npos;) {
    blank = words.find(' ');
    condition += (condition.empty() ? "" : "; and ") +
                 ("__fish_seen_subcommand_from " + words.substr(0, blank));
    words.erase(0, blank == std::string::npos ? blank : blank + 1);
  }
  if (!command.commands.empty()) {
    condition += "; and not __fish_seen_subcommand_from" + namesOf(command);
  }
  return condition;
}

std::string valueOf(ArgumentKind kind) {
  switch (kind) {
    case ArgumentKind::kFile:
      return " -r -F";
    case ArgumentKind::kFolder:
      return " -x -a '(__fish_complete_directories)'";
    case ArgumentKind::kUser:
      return " -x -a '(__fish_complete_users)'";
    case ArgumentKind::kText:
      return " -x";
    case ArgumentKind::kNone:
      return "";
  }
  return "";
}

std::string linesFor(const CommandOutline& command) {
  const std::string start = "complete -c vistaro -n " + quoted(conditionFor(command));
  std::string lines;
  for (const CommandOutline& inner : command.commands) {
    lines += fmt::format("{} -a {} -d {}\n", start, inner.name, quoted(inner.description));
  }
  for (const OptionOutline& option : command.options) {
    if (!option.flag.empty()) {
      const bool isLong = option.flag.starts_with("--");
      lines += fmt::format("{} {} {}{} -d {}\n", start, isLong ? "-l" : "-s",
                           option.flag.substr(isLong ? 2 : 1), valueOf(option.kind),
                           quoted(option.description));
    } else if (option.kind == ArgumentKind::kFile) {
      lines += start + " -F\n";
    } else if (option.kind == ArgumentKind::kFolder || option.kind == ArgumentKind::kUser) {
      lines += start + valueOf(option.kind).substr(3) + "\n";
    }
  }
  return lines;
}

}  // namespace

std::string fishCompletions(const CommandOutline& program) {
  std::string text = "# Completes `vistaro` in fish.\ncomplete -c vistaro -f\n";
  for (const CommandOutline* command : allCommands(program)) text += linesFor(*command);
  return text;
}

}  // namespace vt::tool
