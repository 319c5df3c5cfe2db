#include "vistaro/UsageError.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

bool hasCommands(const CLI::App& app) {
  return !app.get_subcommands([](const CLI::App*) { return true; }).empty();
}

std::string namesOfCommands(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (!command->get_group().empty()) names.push_back(command->get_name());  // else it is hidden
  }
  return fmt::format("{} or {}", fmt::join(names.begin(), names.end() - 1, ", "), names.back());
}

std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<CLI::App*> commands = app.get_subcommands();
  // What could not be placed says more than what is missing because of it.
  if (const std::vector<std::string> left = app.remaining(/*recurse=*/true); !left.empty()) {
    const std::string first = printable(left.front());
    if (first.size() > 1 && first.starts_with('-')) return "there is no option " + first;
    if (commands.empty()) return fmt::format("there is no command \"{}\"", first);
    if (commands.front()->get_subcommands().empty() && hasCommands(*commands.front())) {
      return fmt::format("there is no command \"{} {}\"", commands.front()->get_name(), first);
    }
    return fmt::format("\"{}\" is one argument too many", first);
  }
  if (commands.empty()) return "name a command: " + namesOfCommands(app);
  if (commands.front()->get_subcommands().empty() && hasCommands(*commands.front())) {
    return "name what to do: " + namesOfCommands(*commands.front());
  }
  std::string text = printable(error.what());
  if (error.get_name() == "ArgumentMismatch") {
    const std::string option = text.substr(0, text.find(':'));
    return option + (text.ends_with("missing") ? " needs a value" : " can be given only once");
  }
  return text;
}

}  // namespace

std::string describeUsageError(const CLI::App& app, const CLI::ParseError& error) {
  std::string typed;
  for (const CLI::App* command = &app; !command->get_subcommands().empty();) {
    command = command->get_subcommands().front();
    typed += " " + command->get_name();
  }
  return fmt::format("{}; `vistaro{} --help` tells more", whatIsWrong(app, error), typed);
}

CLI::Validator countingNumber() {
  return CLI::Validator(
      [](std::string& text) {
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
        std::uint64_t number = 0;
        const bool isNumber = !text.empty() && std::ranges::all_of(text, [&](char c) {
          if (c < '0' || c > '9') return false;
          number = std::min(number * 10 + static_cast<std::uint64_t>(c - '0'), kMost + 1);
          return true;
        });
        if (!isNumber || number == 0 || number > kMost) {
          return fmt::format("\"{}\" is no whole number from 1 to {}", text, kMost);
        }
        text = std::to_string(number);  // without leading zeros, which would be read as octal
        return std::string();
      },
      "N");
}

}  // namespace vt::tool
