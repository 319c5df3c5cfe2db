#include <fmt/format.h>

#include "vistaro/Completions.h"

namespace vt::tool {
namespace {

const char* actionFor(ArgumentKind kind) {
  switch (kind) {
    case ArgumentKind::kFile:
      return "-f";
    case ArgumentKind::kFolder:
      return "-d";
    case ArgumentKind::kUser:
      return "-u";
    case ArgumentKind::kText:
    case ArgumentKind::kNone:
      return nullptr;
  }
  return nullptr;
}

// The arm of the case over "COMMAND OPTION-BEFORE" that completes the values of options.
std::string valueArms(const CommandOutline& command) {
  std::string arms;
  for (const OptionOutline& option : command.options) {
    if (option.flag.empty() || option.placeholder.empty()) continue;
    const char* action = actionFor(option.kind);
    arms += fmt::format("    \"{} {}\") {} ;;\n", command.path, option.flag,
                        action ? fmt::format("_vistaro_offer {}; return", action)
                               : std::string("COMPREPLY=(); return"));
  }
  return arms;
}

std::string commandArm(const CommandOutline& command) {
  std::string words;
  for (const CommandOutline& inner : command.commands) words += inner.name + " ";
  const char* action = nullptr;
  for (const OptionOutline& option : command.options) {
    if (option.flag.empty()) {
      if (!action) action = actionFor(option.kind);
    } else {
      words += option.flag + " ";
    }
  }
  std::string offer = fmt::format("_vistaro_offer -W \"{}\"", words);
  if (action) {
    offer =
        fmt::format("if [[ $current == -* ]]; then {}; else _vistaro_offer {}; fi", offer, action);
  }
  return fmt::format("    \"{}\") {} ;;\n", command.path, offer);
}

}  // namespace

std::string bashCompletions(const CommandOutline& program) {
  std::string paths;
  std::string values;
  std::string arms;
  for (const CommandOutline* command : allCommands(program)) {
    if (!command->path.empty()) {
      paths += fmt::format("{}\"{}\"", paths.empty() ? "" : "|", command->path);
    }
    values += valueArms(*command);
    arms += commandArm(*command);
  }
  return fmt::format(
      R"(# Completes `vistaro` in bash.
_vistaro_offer() {{
  local IFS=$'\n'
  if [[ $1 == -W ]]; then IFS=$' \n'; fi
  COMPREPLY=($(compgen "$@" -- "$current"))
}}

_vistaro() {{
  local current=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD-1]}} command= word i
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${{COMP_WORDS[i]}}
    case "${{command:+$command }}$word" in
    {}) command="${{command:+$command }}$word" ;;
    esac
  done
  case "$command $before" in
{}  esac
  case "$command" in
{}  esac
}}

complete -o filenames -F _vistaro vistaro
)",
      paths, values, arms);
}

}  // namespace vt::tool
