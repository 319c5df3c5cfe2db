#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "directory/VTUser.h"
#include "foundation/UTF8.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "platform/linux/AccountRecords.h"
#include "saved/VTSavedSearch.h"
#include "vistaro/CommandError.h"
#include "vistaro/Commands.h"
#include "vistaro/FolderTree.h"
#include "vistaro/SearchChoices.h"
#include "vistaro/SearchRun.h"
#include "vistaro/SettingsChange.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

/// What was typed behind `vistaro saved …`.
struct SavedOptions {
  std::optional<std::string> user;  ///< login name; else whoever runs the command
  std::string title;
  std::vector<std::string> words;
  std::optional<std::string> folder;
  bool json = false;
};

std::string loginName() {
  Platform& platform = Platform::current();
  const std::uint32_t uid = platform.identity().geteuid();
  const auto account = accountsUnder(platform.systemPath(""))->accountWithId(uid);
  if (account) return account->name;
  throw CommandError{kFailure, fmt::format("user id {} has no account here", uid)};
}

SearchOptions onBehalfOfOwner(const SavedOptions& options) {
  SearchOptions search;
  search.user = options.user ? *options.user : loginName();
  search.json = options.json;
  return search;
}

std::shared_ptr<VTUser> ownerOf(const SavedOptions& options) {
  return userFor(onBehalfOfOwner(options));
}

std::shared_ptr<VTSavedSearch> savedSearchCalled(const VTUser& user, const std::string& title) {
  const auto searches = user.savedSearches();
  for (const auto& search : *searches) {
    if (search->title() == title) return search;
  }
  throw CommandError{kNothingFound, fmt::format("{} has no saved search called \"{}\"",
                                                printable(user.username()), printable(title))};
}

int listSearches(const SavedOptions& options) {
  readableSettings();
  const auto searches = ownerOf(options)->savedSearches();
  nlohmann::ordered_json entries = nlohmann::ordered_json::array();
  for (const auto& search : *searches) {
    entries.push_back({{"title", displayText(search->title().value_or(""))},
                       {"query", displayText(search->query().value_or(""))},
                       {"folder", displayText(search->searchFolderTitle().value_or(""))}});
  }
  if (options.json) {
    fmt::print("{}\n", entries.dump(2));
  } else {
    const Terminal terminal = Terminal::standardOutput();
    for (const auto& entry : entries) {
      const std::string folder = entry["folder"].get<std::string>();
      fmt::print("{}  {}{}\n", terminal.bold(printable(entry["title"].get<std::string>())),
                 printable(entry["query"].get<std::string>()),
                 folder.empty() ? "" : terminal.dim("  in " + printable(folder)));
    }
  }
  return entries.empty() ? kNothingFound : kFound;
}

int addSearch(const SavedOptions& options) {
  if (options.title.empty()) throw CommandError{kUsage, "a saved search needs a title"};
  SearchOptions typed;
  typed.words = options.words;
  const std::string query = queryFor(typed);
  if (!isValidUTF8(options.title) || !isValidUTF8(query)) {
    throw CommandError{kUsage, "title and query must be UTF-8"};
  }
  SettingsChange change;
  const std::shared_ptr<VTUser> user = ownerOf(options);
  const auto search = VTSavedSearch::initWithQuery(query, options.title);
  if (options.folder) {
    search->setSearchFolder(
        placeOfFolder(change.settings().searchFolders(), *options.folder).folder);
  }
  search->addToStorage(*user->userStorage());
  change.save();
  fmt::print("\"{}\" finds {}\n", printable(options.title), printable(query));
  return kFound;
}

int removeSearch(const SavedOptions& options) {
  SettingsChange change;
  const std::shared_ptr<VTUser> user = ownerOf(options);
  savedSearchCalled(*user, options.title)->removeFromStorage(*user->userStorage());
  change.save();
  fmt::print("\"{}\" is removed\n", printable(options.title));
  return kFound;
}

int runSavedSearch(const SavedOptions& options) {
  readableSettings();
  const auto saved = savedSearchCalled(*ownerOf(options), options.title);
  SearchOptions search = onBehalfOfOwner(options);
  search.words = {saved->query().value_or("")};
  search.raw = true;
  const std::string folder = saved->searchFolderTitle().value_or("");
  if (!folder.empty()) search.folder = folder;
  return runSearch(search);
}

using Run = int (*)(const SavedOptions& options);

CLI::App* addAction(CLI::App& saved, int& status, const char* name, const char* description,
                    const std::shared_ptr<SavedOptions>& options, Run run) {
  CLI::App* command = saved.add_subcommand(name, description);
  command->add_option("--user", options->user, "Whose saved searches; for others only as root")
      ->type_name("USER");
  command->callback(
      [options, run, &status] { status = reportingErrors([&] { return run(*options); }); });
  return command;
}

}  // namespace

void addSavedCommand(CLI::App& app, int& status) {
  const auto options = std::make_shared<SavedOptions>();
  CLI::App* saved = app.add_subcommand("saved", "Show, change and run saved searches");
  saved->require_subcommand(1);

  CLI::App* list = addAction(*saved, status, "list", "List them", options, listSearches);
  list->add_flag("--json", options->json, "Print JSON");

  CLI::App* add = addAction(*saved, status, "add",
                            "Save a search; one with the same title makes way", options, addSearch);
  add->add_option("title", options->title, "Title")->required();
  add->add_option("words", options->words, "Words or a query, as for `vistaro search`")->required();
  add->add_option("--folder", options->folder, "Title of the search folder to search");

  CLI::App* remove = addAction(*saved, status, "remove", "Remove one", options, removeSearch);
  remove->add_option("title", options->title, "Title, to the letter")->required();

  CLI::App* run = addAction(*saved, status, "run", "Search again", options, runSavedSearch);
  run->add_option("title", options->title, "Title, to the letter")->required();
  run->add_flag("--json", options->json, "Print JSON");
}

}  // namespace vt::tool
