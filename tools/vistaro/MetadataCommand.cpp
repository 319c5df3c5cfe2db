#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "foundation/UTF8.h"
#include "platform/Attributes.h"
#include "platform/Platform.h"
#include "search/ItemMetadata.h"
#include "search/VTSearchResult.h"
#include "settings/VTSettings.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/OnBehalf.h"
#include "vistaro/Terminal.h"
#include "vistaro/TypedFiles.h"
#include "vistaro/ValueJSON.h"
#include "vistaro/ValueText.h"

namespace vt::tool {
namespace {

struct MetadataOptions {
  std::vector<std::string> files;
  std::optional<std::string> user;
  bool json = false;
  bool raw = false;
};

struct DescribedFile {
  std::string typed;
  std::string path;
  std::shared_ptr<Dictionary> metadata;  // empty for a file that may not be read
};

std::shared_ptr<Dictionary> metadataByDisplayName(const std::string& path,
                                                  const std::shared_ptr<VTUser>& user) {
  const auto records =
      VTSearchResult::Records::make({Dictionary::make({{kMDItemPath, Value(path)}})});
  return VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {}, user)
      ->metadataForItemAtIndex(0);
}

std::string reportAsJSON(const std::vector<DescribedFile>& files) {
  auto list = nlohmann::ordered_json::array();
  for (const DescribedFile& file : files) {
    auto entry = nlohmann::ordered_json::object();
    entry["path"] = displayText(file.path);
    entry["metadata"] = file.metadata->empty() ? nullptr : jsonOf(Value(file.metadata));
    list.push_back(std::move(entry));
  }
  return list.dump(2) + '\n';
}

std::string linesOf(const Dictionary& metadata, const Terminal& terminal) {
  std::size_t columns = 0;
  for (const auto& [name, value] : metadata) columns = std::max(columns, name.str().size() + 1);
  std::string text;
  for (const auto& [name, value] : metadata) {
    text += fmt::format("{} {}\n", terminal.bold(padded(printable(name.str()) + ":", columns)),
                        textOf(value));
  }
  return text;
}

/// Each file's metadata below its name; a single file's without it.
std::string reportAsText(const std::vector<DescribedFile>& files, const Terminal& terminal) {
  std::string text;
  for (const DescribedFile& file : files) {
    if (file.metadata->empty()) continue;
    if (files.size() > 1) {
      text += fmt::format("{}{}\n", text.empty() ? "" : "\n", printable(file.typed));
    }
    text += linesOf(*file.metadata, terminal);
  }
  return text;
}

int runMetadata(const MetadataOptions& options) {
  if (!Platform::current().hasMetadataIndex()) {
    throw CommandError{kFailure,
                       "the tables of types and attributes cannot be read; "
                       "`vistaro doctor` tells more"};
  }
  const std::shared_ptr<VTUser> user = userOnBehalf(options.user, "look at files");
  VTSettings::sharedInstance()->loadAttributeNames();
  std::vector<DescribedFile> files;
  for (const std::string& typed : options.files) {
    const std::string path = absolutePathOf(typed);
    files.push_back(
        {typed, path,
         options.raw ? metadataAttributes(path, user.get()) : metadataByDisplayName(path, user)});
    if (files.back().metadata->empty()) printError(describeUnreadable(typed));
  }
  fmt::print("{}",
             options.json ? reportAsJSON(files) : reportAsText(files, Terminal::standardOutput()));
  const bool isAnyFound =
      std::ranges::any_of(files, [](const DescribedFile& file) { return !file.metadata->empty(); });
  return isAnyFound ? kFound : kNothingFound;
}

}  // namespace

void addMetadataCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<MetadataOptions>();
  CLI::App* command =
      app.add_subcommand("metadata", "Show what is known of files: dates, size, type and so on");
  addFileArguments(*command, options->files);
  command->add_option("--user", options->user, "With the rights of this user (root only)")
      ->type_name("USER");
  command->add_flag("--raw", options->raw, "Name attributes as queries do");
  command->add_flag("--json", options->json, "Print JSON");
  command->callback(
      [options, &status] { status = reportingErrors([&] { return runMetadata(*options); }); });
}

}  // namespace vt::tool
