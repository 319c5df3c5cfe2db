#include "vistaro/UsageError.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>

#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

std::string whatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<CLI::App*> commands = app.get_subcommands();
  // What could not be placed says more than what is missing because of it.
  if (const std::vector<std::string> left = app.remaining(/*recurse=*/true); !left.empty()) {
    const std::string first = printable(left.front());
    if (first.size() > 1 && first.starts_with('-')) return "there is no option " + first;
    if (commands.empty()) return fmt::format("there is no command \"{}\"", first);
    return fmt::format("\"{}\" is one argument too many", first);
  }
  if (commands.empty()) return "name a command: search, user, kinds, attributes, status or doctor";
  std::string text = printable(error.what());
  if (error.get_name() == "ArgumentMismatch") {
    const std::string option = text.substr(0, text.find(':'));
    return option + (text.ends_with("missing") ? " needs a value" : " can be given only once");
  }
  return text;
}

}  // namespace

std::string describeUsageError(const CLI::App& app, const CLI::ParseError& error) {
  const std::vector<CLI::App*> commands = app.get_subcommands();
  const std::string command = commands.empty() ? "" : " " + commands.front()->get_name();
  return fmt::format("{}; `vistaro{} --help` tells more", whatIsWrong(app, error), command);
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
