#include "vistaro/SearchChoices.h"

#include <fmt/format.h>

#include <filesystem>

#include "kinds/VTSearchKind.h"
#include "platform/Attributes.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/TypedSearch.h"
#include "settings/VTSettings.h"
#include "vistaro/CanonicalFolder.h"
#include "vistaro/Checkup.h"
#include "vistaro/CommandError.h"
#include "vistaro/FolderTree.h"
#include "vistaro/OnBehalf.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

constexpr std::size_t kDefaultPerPage = 25;

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) {
    if (!text.empty()) text += ' ';
    text += word;
  }
  return text;
}

std::string rejectionText(const MDTypedRejection& why) {
  const std::string text = printable(why.text);
  if (why.kind == "number") return fmt::format("\"{}\" is not a number", text);
  if (why.kind == "date") {
    return fmt::format("\"{}\" is not a date: type today, last-week, 2024, 2024-03 or 2024-03-31",
                       text);
  }
  if (why.kind == "truth") return fmt::format("\"{}\" should be yes or no", text);
  if (why.kind == "nothing") return "there is nothing to search for: type some words";
  return "these words cannot make a query: there are too many";
}

std::shared_ptr<ObjectArray<VTSearchFolder>> foldersOfSettings() {
  std::shared_ptr<ObjectArray<VTSearchFolder>> folders =
      VTSettings::sharedInstance()->searchFolders();
  if (!folders->empty()) return folders;
  for (const Diagnosis& diagnosis : checkSettings()) {
    if (diagnosis.finding == Finding::kFault) throw CommandError{kFailure, diagnosis.text};
  }
  throw CommandError{kUsage,
                     "no search folders are set up yet: `vistaro folders add` one, or name a "
                     "folder with --path"};
}

}  // namespace

std::string queryFor(const SearchOptions& options) {
  std::string text = joined(options.words);
  const char* const noWords = options.raw ? " \t\r\n" : " \t\r\n\"";
  if (text.find_first_not_of(noWords) == std::string::npos) {
    throw CommandError{kUsage, "there is nothing to search for: type some words"};
  }
  if (options.raw) return text;
  // Names before colons mean something only once they are known, which costs a look at all of them.
  if (text.find(':') != std::string::npos) VTSettings::sharedInstance()->loadAttributeNames();
  const auto query = queryForTypedSearch(text, /*readsFiles=*/true);
  if (!query) throw CommandError{kUsage, rejectionText(query.error())};
  return query->query;
}

std::shared_ptr<VTUser> userFor(const SearchOptions& options) {
  return userOnBehalf(options.user, "search");
}

// On behalf of somebody else a path stays as it is typed, for the index to resolve with the rights
// of `user`: what this process sees of it would tell of folders that the user may not see.
std::shared_ptr<ObjectArray<VTSearchFolder>> foldersFor(const SearchOptions& options,
                                                        const VTUser* user) {
  if (options.folder) {
    const auto configured = foldersOfSettings();
    return ObjectArray<VTSearchFolder>::make({placeOfFolder(configured, *options.folder).folder});
  }
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

std::size_t perPageFor(const SearchOptions& options, const VTUser* user) {
  if (options.perPage) return *options.perPage;
  if (options.json && !options.page) return 0;  // a program wants all of it
  if (user && user->resultsPerPage().intValue() > 0) {
    return static_cast<std::size_t>(user->resultsPerPage().intValue());
  }
  return kDefaultPerPage;
}

}  // namespace vt::tool
