#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "foundation/UTF8.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "vistaro/CanonicalFolder.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/FolderTree.h"
#include "vistaro/SettingsChange.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

const char* downloadWord(std::int64_t download) {
  if (download == 1) return "yes";
  return download == 0 ? "no" : "mixed";
}

Json describe(const VTSearchFolder& folder) {
  Json entry;
  entry["title"] = displayText(folder.title().value_or(""));
  if (const auto* concrete = dynamic_cast<const VTConcreteSearchFolder*>(&folder)) {
    entry["path"] = displayText(concrete->path().value_or(""));
  }
  entry["download"] = downloadWord(folder.download());
  if (dynamic_cast<const VTSearchFolderGroup*>(&folder) != nullptr) {
    entry["folders"] = Json::array();
    if (const std::shared_ptr<Folders> members = folder.folders()) {
      for (const auto& member : *members) entry["folders"].push_back(describe(*member));
    }
  }
  return entry;
}

void show(const Json& entries, std::size_t depth, const Terminal& terminal) {
  for (const Json& entry : entries) {
    const std::string title = printable(entry["title"].get<std::string>());
    std::string line = std::string(2 * depth, ' ') + terminal.bold(title);
    if (entry.contains("path")) line += "  " + printable(entry["path"].get<std::string>());
    fmt::print("{}{}\n", line,
               entry["download"] == "no"
                   ? ""
                   : terminal.dim("  downloads: " + entry["download"].get<std::string>()));
    if (entry.contains("folders")) show(entry["folders"], depth + 1, terminal);
  }
}

int listFolders(bool asJson) {
  Json entries = Json::array();
  for (const auto& folder : *readableSettings()->searchFolders()) {
    entries.push_back(describe(*folder));
  }
  if (asJson) {
    fmt::print("{}\n", entries.dump(2));
  } else {
    show(entries, /*depth=*/0, Terminal::standardOutput());
    if (entries.empty()) printError("no search folders are set up yet");
  }
  return entries.empty() ? kNothingFound : kFound;
}

void needFreeTitle(const std::shared_ptr<Folders>& top, const std::string& title) {
  if (title.empty()) throw CommandError{kUsage, "a search folder needs a title"};
  if (!isValidUTF8(title)) throw CommandError{kUsage, "a title must be UTF-8; name one by --title"};
  if (!findFolder(top, title)) return;
  throw CommandError{kUsage, fmt::format("a search folder is called \"{}\" already; name another "
                                         "title",
                                         printable(title))};
}

struct AddOptions {
  std::string path;
  std::optional<std::string> title;
  std::optional<std::string> group;
  bool download = false;
};

int addFolder(const AddOptions& options) {
  const std::filesystem::path path = canonicalFolder(options.path);
  if (!isValidUTF8(path.native())) {
    throw CommandError{kUsage, "the settings can hold only paths that are UTF-8"};
  }
  SettingsChange change;
  const std::shared_ptr<Folders> top = change.settings().searchFolders();
  const std::string name = path == "/" ? "/" : path.filename().string();
  const std::string title = options.title.value_or(name);
  needFreeTitle(top, title);
  const auto folder = VTConcreteSearchFolder::initWithPath(path.string(), title);
  if (options.download) folder->setDownload(1);
  if (options.group) {
    groupCalled(top, *options.group)->addFolder(folder);
  } else {
    top->append(folder);
  }
  change.settings().setSearchFolders(top);
  change.save();
  fmt::print("{} is searched as \"{}\"\n", printable(path.string()), printable(title));
  return kFound;
}

int removeFolder(const std::string& title) {
  SettingsChange change;
  const std::shared_ptr<Folders> top = change.settings().searchFolders();
  takeOut(top, placeOfFolder(top, title));
  change.settings().setSearchFolders(top);
  change.save();
  fmt::print("\"{}\" is not searched any more\n", printable(title));
  return kFound;
}

int groupFolders(const std::string& title, const std::vector<std::string>& members) {
  SettingsChange change;
  const std::shared_ptr<Folders> top = change.settings().searchFolders();
  needFreeTitle(top, title);
  const auto group = VTSearchFolderGroup::initWithTitle(title);
  for (const std::string& member : members) {
    const FolderPlace place = placeOfFolder(top, member);
    takeOut(top, place);
    group->addFolder(place.folder);
  }
  top->append(group);
  change.settings().setSearchFolders(top);
  change.save();
  fmt::print("\"{}\" is a group of {} search folder{}\n", printable(title), members.size(),
             members.size() == 1 ? "" : "s");
  return kFound;
}

// The members take the group's place, in their order.
int ungroupFolders(const std::string& title) {
  SettingsChange change;
  const std::shared_ptr<Folders> top = change.settings().searchFolders();
  const auto group = groupCalled(top, title);
  const FolderPlace place = placeOfFolder(top, title);
  const std::shared_ptr<Folders> members = group->folders();
  const std::vector<std::shared_ptr<VTSearchFolder>> freed =
      members ? members->elements() : std::vector<std::shared_ptr<VTSearchFolder>>();
  if (place.group) {
    takeOut(top, place);
    for (const auto& member : freed) place.group->addFolder(member);
  } else {
    auto& folders = top->elements();
    const auto at = folders.erase(std::ranges::find(folders, place.folder));
    folders.insert(at, freed.begin(), freed.end());
  }
  change.settings().setSearchFolders(top);
  change.save();
  fmt::print("\"{}\" is dissolved\n", printable(title));
  return kFound;
}

int setDownload(const std::string& title, bool allowed) {
  SettingsChange change;
  const std::shared_ptr<Folders> top = change.settings().searchFolders();
  placeOfFolder(top, title).folder->setDownload(allowed ? 1 : 0);
  change.settings().setSearchFolders(top);
  change.save();
  fmt::print("downloads from \"{}\" are {}\n", printable(title), allowed ? "allowed" : "refused");
  return kFound;
}

void addListCommand(CLI::App& folders, int& status) {
  auto asJson = std::make_shared<bool>(false);
  CLI::App* command = folders.add_subcommand("list", "List the search folders and groups");
  command->add_flag("--json", *asJson, "Print JSON");
  command->callback(
      [asJson, &status] { status = reportingErrors([&] { return listFolders(*asJson); }); });
}

void addAddCommand(CLI::App& folders, int& status) {
  auto options = std::make_shared<AddOptions>();
  CLI::App* command =
      folders.add_subcommand("add", "Let a folder be searched; its path is stored without links");
  command->add_option("folder", options->path, "The folder")->type_name("DIR")->required();
  command->add_option("--title", options->title, "What people see; else the folder's name");
  command->add_option("--group", options->group, "Add it to this group");
  command->add_flag("--download", options->download, "Allow downloads from it");
  command->callback(
      [options, &status] { status = reportingErrors([&] { return addFolder(*options); }); });
}

void addGroupCommand(CLI::App& folders, int& status) {
  auto title = std::make_shared<std::string>();
  auto members = std::make_shared<std::vector<std::string>>();
  CLI::App* command = folders.add_subcommand("group", "Put search folders into a new group");
  command->add_option("title", *title, "Title of the group")->required();
  command->add_option("members", *members, "Titles of the folders and groups to put into it")
      ->required();
  command->callback([title, members, &status] {
    status = reportingErrors([&] { return groupFolders(*title, *members); });
  });
}

void addTitleCommand(CLI::App& folders, int& status, const char* name, const char* description,
                     int (*run)(const std::string& title)) {
  auto title = std::make_shared<std::string>();
  CLI::App* command = folders.add_subcommand(name, description);
  command->add_option("title", *title, "Title, to the letter")->required();
  command->callback(
      [title, run, &status] { status = reportingErrors([&] { return run(*title); }); });
}

void addDownloadCommand(CLI::App& folders, int& status) {
  auto title = std::make_shared<std::string>();
  auto word = std::make_shared<std::string>();
  CLI::App* command =
      folders.add_subcommand("download", "Allow or refuse downloads from a folder or group");
  command->add_option("title", *title, "Title, to the letter")->required();
  command->add_option("allowed", *word, "yes or no")
      ->required()
      ->check(CLI::IsMember({"yes", "no"}));
  command->callback([title, word, &status] {
    status = reportingErrors([&] { return setDownload(*title, *word == "yes"); });
  });
}

}  // namespace

void addFoldersCommand(CLI::App& app, int& status) {
  CLI::App* folders = app.add_subcommand("folders", "Show and change what may be searched");
  folders->require_subcommand(1);
  addListCommand(*folders, status);
  addAddCommand(*folders, status);
  addTitleCommand(*folders, status, "remove", "Do not search a folder or group any more",
                  removeFolder);
  addGroupCommand(*folders, status);
  addTitleCommand(*folders, status, "ungroup", "Dissolve a group; its folders stay",
                  ungroupFolders);
  addDownloadCommand(*folders, status);
}

}  // namespace vt::tool
