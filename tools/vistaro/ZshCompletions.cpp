#include <fmt/format.h>

#include <algorithm>

#include "vistaro/Completions.h"

namespace vt::tool {
namespace {

// Inside single quotes, and safe as the text of an _arguments specification.
std::string quoted(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\'') {
      result += R"('\'')";
    } else if (c == '[' || c == ']' || c == ':' || c == '\\') {
      result += '\\';
      result += c;
    } else {
      result += c;
    }
  }
  return result;
}

const char* actionFor(ArgumentKind kind) {
  switch (kind) {
    case ArgumentKind::kFile:
      return "_files";
    case ArgumentKind::kFolder:
      return "_files -/";
    case ArgumentKind::kUser:
      return "_users";
    case ArgumentKind::kText:
    case ArgumentKind::kNone:
      return "";
  }
  return "";
}

std::string specificationOf(const OptionOutline& option) {
  if (option.flag.empty()) {
    return fmt::format("'{}:{}:{}'", option.repeats ? "*" : "", quoted(option.name),
                       actionFor(option.kind));
  }
  const std::string value =
      option.placeholder.empty()
          ? ""
          : fmt::format(":{}:{}", quoted(option.placeholder), actionFor(option.kind));
  return fmt::format("'{}{}[{}]{}'", option.repeats ? "*" : "", option.flag,
                     quoted(option.description), value);
}

std::string functionName(const CommandOutline& command) {
  std::string name = "_vistaro" + (command.path.empty() ? "" : "_" + command.path);
  std::ranges::replace(name, ' ', '_');
  return name;
}

std::string functionFor(const CommandOutline& command) {
  std::string text = functionName(command) + "() {\n";
  std::string specifications;
  for (const OptionOutline& option : command.options) {
    specifications += " \\\n    " + specificationOf(option);
  }
  if (command.commands.empty()) return text + "  _arguments" + specifications + "\n}\n\n";

  text += "  local line state\n  local -a commands=(\n";
  for (const CommandOutline& inner : command.commands) {
    text += fmt::format("    '{}:{}'\n", inner.name, quoted(inner.description));
  }
  text += "  )\n  _arguments -C" + specifications +
          " \\\n    '1: :->command' '*:: :->arguments'\n  case $state in\n"
          "  command) _describe command commands ;;\n"
          "  arguments)\n    case $line[1] in\n";
  for (const CommandOutline& inner : command.commands) {
    text += fmt::format("    {}) {} ;;\n", inner.name, functionName(inner));
  }
  return text + "    esac ;;\n  esac\n}\n\n";
}

}  // namespace

std::string zshCompletions(const CommandOutline& program) {
  std::string text = "#compdef vistaro\n# Completes `vistaro` in zsh.\n\n";
  for (const CommandOutline* command : allCommands(program)) text += functionFor(*command);
  // Sourced, it registers itself; found in fpath, it is called as the function.
  return text +
         "if [[ $funcstack[1] == _vistaro ]]; then\n  _vistaro \"$@\"\nelse\n"
         "  compdef _vistaro vistaro\nfi\n";
}

}  // namespace vt::tool
