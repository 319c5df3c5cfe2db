#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

#include "directory/VTUser.h"
#include "foundation/NSLog.h"
#include "kinds/VTSearchKind.h"
#include "metadata/query/PlainWords.h"
#include "metadata/query/QueryError.h"
#include "platform/Attributes.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResultContainer.h"
#include "settings/VTSettings.h"
#include "vistaro/Checkup.h"
#include "vistaro/Commands.h"
#include "vistaro/Exit.h"
#include "vistaro/SearchProgress.h"
#include "vistaro/SearchReport.h"
#include "vistaro/UsageError.h"

namespace vt::tool {
namespace {

/// Ends the command with a line on standard error.
struct CommandError {
  Exit code;
  std::string text;
};

constexpr std::size_t kDefaultPerPage = 25;

/// Keeps the library's log off the screen unless it is asked for or the command fails.
class CollectedLog {
 public:
  explicit CollectedLog(bool shown)
      : redirection_([this, shown](std::string_view text) {
          const std::string line = formatLogLine(text);
          if (shown) {
            std::fwrite(line.data(), 1, line.size(), stderr);
          } else {
            lines_ += line;
          }
        }) {}

  void show() const { std::fwrite(lines_.data(), 1, lines_.size(), stderr); }

 private:
  std::string lines_;
  LogRedirection redirection_;
};

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

std::string queryFor(const SearchOptions& options) {
  std::string text = joined(options.words);
  const char* const noWords = options.raw ? " \t\r\n" : " \t\r\n\"";
  if (text.find_first_not_of(noWords) == std::string::npos) {
    throw CommandError{kUsage, "there is nothing to search for: type some words"};
  }
  if (options.raw || query::looksLikeQuery(text)) return text;
  std::optional<std::string> query = query::queryFromWords(text);
  if (!query) throw CommandError{kUsage, "these words cannot make a query: there are too many"};
  return *query;
}

std::shared_ptr<VTUser> userFor(const SearchOptions& options) {
  if (!options.user) return nullptr;
  std::shared_ptr<VTUser> user = VTUser::userWithName(*options.user);
  if (!user) {
    throw CommandError{kUsage, fmt::format("no user is called \"{}\"", printable(*options.user))};
  }
  const std::uint32_t self = Platform::current().identity().geteuid();
  if (self != 0 && self != user->uid()) {
    throw CommandError{kFailure, "only root can search on behalf of somebody else"};
  }
  return user;
}

std::shared_ptr<ObjectArray<VTSearchFolder>> foldersOfSettings() {
  std::shared_ptr<ObjectArray<VTSearchFolder>> folders =
      VTSettings::sharedInstance()->searchFolders();
  if (!folders->empty()) return folders;
  for (const Diagnosis& diagnosis : checkSettings()) {
    if (diagnosis.finding == Finding::kFault) throw CommandError{kFailure, diagnosis.text};
  }
  throw CommandError{kUsage, "no search folders are set up yet: name a folder with --path"};
}

/// The absolute path of a folder, its links resolved.
std::filesystem::path canonicalFolder(const std::string& path) {
  std::error_code error;
  std::filesystem::path canonical = std::filesystem::canonical(path, error);
  if (!error && !std::filesystem::is_directory(canonical, error) && !error) {
    error = std::make_error_code(std::errc::not_a_directory);
  }
  if (error) throw CommandError{kUsage, fmt::format("{}: {}", printable(path), error.message())};
  return canonical;
}

/// On behalf of somebody else a path stays as it is typed, for the index to resolve with the rights
/// of `user`: what this process sees of it would tell of folders that the user may not see.
std::shared_ptr<ObjectArray<VTSearchFolder>> foldersFor(const SearchOptions& options,
                                                        const VTUser* user) {
  if (options.paths.empty()) return foldersOfSettings();
  const bool onBehalf = user && user->uid() != Platform::current().identity().geteuid();
  auto folders = ObjectArray<VTSearchFolder>::make();
  for (const std::string& path : options.paths) {
    if (path.empty()) throw CommandError{kUsage, "--path needs the name of a folder"};
    const std::filesystem::path folder =
        onBehalf ? std::filesystem::absolute(path) : canonicalFolder(path);
    folders->append(
        VTConcreteSearchFolder::initWithPath(folder.string(), folder.filename().string()));
  }
  return folders;
}

std::shared_ptr<VTSearchKind> kindFor(const SearchOptions& options) {
  if (!options.kind) return nullptr;
  if (auto exact = VTSearchKind::kindWithTitle(*options.kind)) return exact;
  const auto wanted = VTSearchKind::initWithTitle(*options.kind, nullptr);
  std::string titles;
  for (const auto& kind : *VTSearchKind::allSearchKinds()) {
    if (kind->titleCompare(*wanted) == 0) return kind;
    titles += (titles.empty() ? "" : ", ") + kind->title();
  }
  throw CommandError{kUsage, fmt::format("no kind is called \"{}\"; there are: {}",
                                         printable(*options.kind), titles)};
}

std::optional<std::string> sortAttributeFor(const SearchOptions& options) {
  if (!options.sort) return std::nullopt;
  static constexpr std::pair<std::string_view, std::string_view> kSortable[] = {
      {"name", kMDItemDisplayName},
      {"path", kMDItemPath},
      {"date", kMDItemContentModificationDate},
      {"size", kMDItemFSSize},
      {"used", kMDItemLastUsedDate}};
  std::string names;
  for (const auto& [name, attribute] : kSortable) {
    if (*options.sort == name || *options.sort == attribute) return std::string(attribute);
    names += fmt::format("{}{} ({})", names.empty() ? "" : ", ", name, attribute);
  }
  throw CommandError{kUsage, fmt::format("\"{}\" cannot be sorted by; choose one of {}",
                                         printable(*options.sort), names)};
}

void sortGroup(VTSearchResult& group, const std::string& attribute, bool descending) {
  group.sortByAttribute(attribute);
  // The first sort by an attribute may go either way; the second turns it round.
  if (group.descendingSort() != descending) group.sortByAttribute(attribute);
}

std::size_t perPageFor(const SearchOptions& options, const VTUser* user) {
  if (options.perPage) return *options.perPage;
  if (options.json && !options.page) return 0;  // a program wants all of it
  if (user && user->resultsPerPage().intValue() > 0) {
    return static_cast<std::size_t>(user->resultsPerPage().intValue());
  }
  return kDefaultPerPage;
}

std::string rejection(const std::string& query, const VTSearchManager& manager) {
  const std::optional<MDQueryRejection>& why = manager.lastRejection();
  if (!why) return "the query was rejected";
  query::QueryError error;
  error.offset = why->offset;
  return fmt::format("{}\n{}", why->text, query::renderQueryError(query, error));
}

/// Says what a searcher would else wonder about. Ends the command when nothing could be searched.
void tellNotes(const SearchOptions& options, const VTUser* user, const VTSearchManager& manager) {
  const MDQueryNotes& notes = manager.lastNotes();
  if (notes.hasNoAccount) {
    const std::uint32_t uid = user ? user->uid() : Platform::current().identity().geteuid();
    throw CommandError{kFailure,
                       fmt::format("nothing can be searched with the rights of user id {}: it has "
                                   "no account here, or may not be taken on",
                                   uid)};
  }
  const auto unusable = [&](const std::string& path) {
    return fmt::format("{}: no such folder, or {} may not search it", printable(path),
                       options.user ? printable(*options.user) : "you");
  };
  if (!options.paths.empty() && notes.unusableScopes.size() == options.paths.size()) {
    for (std::size_t i = 1; i < options.paths.size(); ++i) {
      printError(unusable(notes.unusableScopes[i - 1]));
    }
    throw CommandError{kUsage, unusable(notes.unusableScopes.back())};
  }
  for (const std::string& path : notes.unusableScopes) printError("note: " + unusable(path));
  for (const std::string& name : notes.unknownAttributes) {
    printError(fmt::format("note: no file has an attribute called {}", printable(name)));
  }
  if (manager.lastSearchWasCut()) {
    printError("note: there are more hits than are looked at; older ones are left out");
  }
}

SearchReport search(const SearchOptions& options) {
  if (!Platform::current().hasMetadataIndex()) {
    throw CommandError{kFailure,
                       "the tables of types and attributes cannot be read; "
                       "`vistaro doctor` tells more"};
  }
  const std::string query = queryFor(options);
  const std::optional<std::string> sort = sortAttributeFor(options);
  const std::shared_ptr<VTSearchKind> kind = kindFor(options);
  const std::shared_ptr<VTUser> user = userFor(options);
  const std::shared_ptr<ObjectArray<VTSearchFolder>> folders = foldersFor(options, user.get());

  const auto manager = VTSearchManager::initWithUser(user);
  const std::uint64_t searchesBefore = VTSettings::sharedInstance()->searchCount();
  const auto start = std::chrono::steady_clock::now();
  std::shared_ptr<VTSearchResultContainer> container;
  {
    const SearchProgress progress(!options.verbose);
    container = manager->executeQuery(query, folders);
  }
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  if (!container) throw CommandError{kUsage, rejection(query, *manager)};
  if (VTSettings::sharedInstance()->searchCount() == searchesBefore) {
    throw CommandError{kFailure, "the search could not be run"};
  }
  tellNotes(options, user.get(), *manager);

  SearchReport report;
  report.query = query;
  report.seconds = elapsed.count();
  report.page = options.page.value_or(1);
  report.perPage = perPageFor(options, user.get());
  report.groups = ObjectArray<VTSearchResult>::make();
  for (const auto& group : *container->results()) {
    if (kind && group->groupKind() != kind) continue;
    if (sort) sortGroup(*group, *sort, options.descending);
    report.groups->append(group);
  }
  return report;
}

int runSearch(const SearchOptions& options) {
  const CollectedLog log(options.verbose);
  try {
    const SearchReport report = search(options);
    const std::string text =
        options.json ? jsonReport(report) : textReport(report, Terminal::standardOutput());
    fmt::print("{}", text);
    return report.count() > 0 ? kFound : kNothingFound;
  } catch (const CommandError& error) {
    if (error.code == kFailure) log.show();
    printError(error.text);
    return error.code;
  }
}

}  // namespace

void addSearchCommand(CLI::App& app, int& status) {
  auto options = std::make_shared<SearchOptions>();
  CLI::App* command = app.add_subcommand(
      "search", "Find files by words, or by a query in the metadata query language");
  command
      ->add_option("words", options->words,
                   "Words that the name or the text must hold, or a query such as\n"
                   "'kMDItemFSName == \"*.pdf\"c && kMDItemFSSize > 1000000'")
      ->required();
  command->add_option("--user", options->user, "Search on behalf of this user (root only)");
  command
      ->add_option("--path", options->paths,
                   "Search below this folder; repeat for several.\n"
                   "Without it, the search folders of the settings")
      ->allow_extra_args(false);  // one folder for each --path: what follows are words
  command->add_option("--kind", options->kind, "Show only this kind; `vistaro kinds` lists them");
  command->add_option("--sort", options->sort,
                      "Sort each group by name, path, date, size or used (or the attribute's\n"
                      "name), ascending. Without it, newest first");
  command->add_flag("--descending", options->descending, "With --sort: descending")
      ->needs("--sort");
  command->add_option("--page", options->page, "Show this page of each group, from 1")
      ->transform(countingNumber());
  command->add_option("--per-page", options->perPage, "Files of each group on a page (25)")
      ->transform(countingNumber());
  command->add_flag("--json", options->json, "Print JSON, all pages unless one is asked for");
  command->add_flag("--raw", options->raw, "Take the words as a query, whatever they look like");
  command->add_flag("--verbose", options->verbose, "Show the log of the search");
  command->callback([options, &status] { status = runSearch(*options); });
}

}  // namespace vt::tool
