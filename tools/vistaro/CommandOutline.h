#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace vt::tool {

/// What an argument stands for, as its type name in the help says it.
enum class ArgumentKind { kNone, kText, kFile, kFolder, kUser };

/// One option or positional argument of a command.
struct OptionOutline {
  std::string flag;         ///< "--path"; empty for a positional argument
  std::string name;         ///< of a positional argument: "title"
  std::string placeholder;  ///< for the value: "DIR"; empty when there is none
  std::string description;
  ArgumentKind kind = ArgumentKind::kNone;
  bool isRequired = false;
  bool repeats = false;
};

/// One command as it was declared: what completions and the manual page are made of.
struct CommandOutline {
  std::string name;  ///< "list"
  std::string path;  ///< "folders list"; empty for the program itself
  std::string description;
  std::vector<OptionOutline> options;
  std::vector<CommandOutline> commands;
};

/// The program with all its commands, without the hidden ones.
CommandOutline outlineOf(const CLI::App& app);

/// Every command of the outline that can be typed, the program itself first, parents before their
/// commands.
std::vector<const CommandOutline*> allCommands(const CommandOutline& program);

}  // namespace vt::tool
