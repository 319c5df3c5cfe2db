#include "vistaro/TypedFiles.h"

#include <fmt/format.h>

#include <filesystem>

#include "platform/Platform.h"
#include "vistaro/CommandError.h"
#include "vistaro/Terminal.h"

namespace vt::tool {

void addFileArguments(CLI::App& command, std::vector<std::string>& files) {
  command.add_option("files", files, "Files; a name that begins with a dash stands after `--`")
      ->type_name("FILE")
      ->required();
}

std::string absolutePathOf(const std::string& typed) {
  if (typed.empty()) throw CommandError{kUsage, "a file needs a name"};
  return std::filesystem::absolute(typed).string();
}

std::string describeUnreadable(const std::string& typed) {
  return fmt::format("{}: no such file, or it may not be read", printable(typed));
}

}  // namespace vt::tool
