#include "vistaro/SearchRun.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <string>

#include "directory/VTUser.h"
#include "metadata/query/QueryError.h"
#include "platform/Identity.h"
#include "platform/Platform.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResultContainer.h"
#include "settings/VTSettings.h"
#include "vistaro/CommandError.h"
#include "vistaro/SearchChoices.h"
#include "vistaro/SearchNotes.h"
#include "vistaro/SearchProgress.h"
#include "vistaro/SearchReport.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

void sortGroup(VTSearchResult& group, const std::string& attribute, bool descending) {
  group.sortByAttribute(attribute);
  // The first sort by an attribute may go either way; the second turns it round.
  if (group.descendingSort() != descending) group.sortByAttribute(attribute);
}

std::string rejection(const std::string& query, const VTSearchManager& manager) {
  const std::optional<MDQueryRejection>& why = manager.lastRejection();
  if (!why) return "the query was rejected";
  query::QueryError error;
  error.offset = why->offset;
  return fmt::format("{}\n{}", why->text, query::renderQueryError(query, error));
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
  tellNotes(options, user.get(), manager->lastNotes());
  if (manager->lastSearchWasCut()) {
    printError("note: there are more hits than are looked at; older ones are left out");
  }

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

}  // namespace

int runSearch(const SearchOptions& options) {
  return reportingErrors(
      [&] {
        const SearchReport report = search(options);
        if (options.json) {
          writeJSONReport(report, stdout);
        } else {
          const std::string text = textReport(report, Terminal::standardOutput());
          std::fwrite(text.data(), 1, text.size(), stdout);
        }
        return report.count() > 0 ? kFound : kNothingFound;
      },
      /*showsLog=*/options.verbose);
}

}  // namespace vt::tool
