#include "vistaro/ManualPage.h"

#include <fmt/format.h>

namespace vt::tool {
namespace {

// A hyphen of an option is a minus to troff; a line that starts with a dot would be a request.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\e";
    } else if (c == '-') {
      result += "\\-";
    } else {
      if ((c == '.' || c == '\'') && (result.empty() || result.back() == '\n')) result += "\\&";
      result += c;
    }
  }
  return result;
}

std::string synopsisOf(const CommandOutline& command) {
  std::string text = "\\fBvistaro " + escaped(command.path) + "\\fR";
  for (const OptionOutline& option : command.options) {
    if (option.flag == "--help") continue;
    std::string part = option.flag.empty() ? "\\fI" + escaped(option.name) + "\\fR"
                                           : "\\fB" + escaped(option.flag) + "\\fR";
    if (!option.flag.empty() && !option.placeholder.empty()) {
      part += " \\fI" + escaped(option.placeholder) + "\\fR";
    }
    if (option.repeats) part += "...";
    text += option.isRequired ? " " + part : " [" + part + "]";
  }
  return text + "\n";
}

std::string optionsOf(const CommandOutline& command) {
  std::string text;
  for (const OptionOutline& option : command.options) {
    if (option.flag == "--help") continue;
    text += ".TP\n";
    text += option.flag.empty() ? "\\fI" + escaped(option.name) + "\\fR"
                                : "\\fB" + escaped(option.flag) + "\\fR";
    if (!option.flag.empty() && !option.placeholder.empty()) {
      text += " \\fI" + escaped(option.placeholder) + "\\fR";
    }
    text += "\n" + escaped(option.description) + "\n";
  }
  return text;
}

constexpr const char* kEnd = R"(.SH EXIT STATUS
.TP
.B 0
found, or done
.TP
.B 1
nothing found
.TP
.B 2
a rejected query, or options that make no sense
.TP
.B 3
the system did not let it happen
.SH ENVIRONMENT
.TP
.B VISTARO_ROOT
put in front of the system's own paths; with
.I etc/passwd
below it, accounts come from the files there
.TP
.B VISTARO_RESOURCES
the folder with the kinds, types and attributes
.TP
.B VISTARO_INDEX
the folder of the index
.TP
.B NO_COLOR
no colours, also on a terminal
)";

}  // namespace

std::string manualPage(const CommandOutline& program, const std::string& version) {
  std::string text = fmt::format(
      ".TH VISTARO 8 \"\" \"Vistaro {}\" \"System Administration\"\n"
      ".SH NAME\nvistaro \\- find files, and show and change what the file search server does\n"
      ".SH SYNOPSIS\n\\fBvistaro\\fR \\fIcommand\\fR [\\fIoption\\fR...]\n"
      ".SH DESCRIPTION\n{}\n.SH COMMANDS\n",
      escaped(version), escaped(program.description));
  for (const CommandOutline* command : allCommands(program)) {
    if (command->path.empty() || !command->commands.empty()) continue;
    text += ".SS " + escaped(command->path) + "\n" + synopsisOf(*command) + ".PP\n" +
            escaped(command->description) + ".\n" + optionsOf(*command);
  }
  return text + kEnd;
}

}  // namespace vt::tool
