#include "vistaro/SearchExplanation.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <unordered_set>
#include <utility>

#include "foundation/UTF8.h"
#include "kinds/VTSearchKind.h"
#include "metadata/query/QueryParser.h"
#include "platform/Attributes.h"
#include "platform/Identity.h"
#include "platform/MetadataIndex.h"
#include "platform/Platform.h"
#include "platform/linux/AttributeTables.h"
#include "scopes/FolderPaths.h"
#include "search/UserIdentityScope.h"
#include "search/VTSearchManager.h"
#include "vistaro/AccessReason.h"
#include "vistaro/CommandError.h"
#include "vistaro/QueryOutline.h"
#include "vistaro/SearchChoices.h"
#include "vistaro/Terminal.h"

namespace vt::tool {
namespace {

using Json = nlohmann::ordered_json;

// More are for programs to read.
constexpr std::size_t kMostShown = 100;
// However a query nests, its lines begin on the screen.
constexpr std::size_t kDeepestIndent = 20;

struct Drop {
  std::string path;
  std::string reason;
};

struct Explanation {
  std::string query;
  std::vector<OutlineLine> outline;
  MDQueryNotes notes;
  std::size_t candidates = 0;  ///< that satisfy the query, whoever may read them
  std::size_t hits = 0;        ///< that the user gets to see
  std::vector<Drop> drops;     ///< newest first
};

struct Hit {
  std::string path;
  bool hasKind = false;
};

/// What is found in the folders with the rights of `user`, or of root.
std::vector<Hit> hitsFor(const VTUser* user, const std::string& text,
                         const std::vector<std::string>& scope, MDQueryNotes& notes) {
  MetadataIndex& index = Platform::current().metadataIndex();
  const UserIdentityScope identity(user);
  const std::vector<std::string> wanted = {std::string(kMDItemContentTypeTree)};
  const std::shared_ptr<MDQuery> query = index.MDQueryCreate(text, wanted, {});
  index.MDQuerySetSearchScope(*query, scope, 0);
  if (!index.MDQueryExecute(*query, kMDQuerySynchronous | kMDQueryCountsSteps)) {
    throw CommandError{kFailure, "the search could not be run"};
  }
  notes = index.MDQueryCopyNotes(*query);
  std::vector<Hit> hits;
  for (std::int32_t i = 0; i < index.MDQueryGetResultCount(*query); ++i) {
    const auto path =
        index.MDItemCopyAttribute(*index.MDQueryGetResultAtIndex(*query, i), kMDItemPath);
    const auto tree =
        index.MDQueryGetAttributeValueOfResultAtIndex(*query, kMDItemContentTypeTree, i);
    const auto kind = VTSearchKind::kindForContentTypes(tree ? tree->array().get() : nullptr);
    if (path) hits.push_back({*path->get<std::string>(), kind != nullptr});
  }
  return hits;
}

Explanation explain(const SearchOptions& options) {
  Explanation told;
  told.query = queryFor(options);
  const Platform& platform = Platform::current();
  const auto schema = attributesIn(platform.resources(), {});
  if (!schema || !platform.hasMetadataIndex()) {
    throw CommandError{kFailure,
                       "the tables of types and attributes cannot be read; "
                       "`vistaro doctor` tells more"};
  }
  const auto parsed = query::parseQuery(told.query, *schema);
  if (!parsed) {
    throw CommandError{kUsage, fmt::format("{}\n{}", describeQueryError(parsed.error()),
                                           renderQueryError(told.query, parsed.error()))};
  }
  told.outline = outlineOf(*parsed);

  const std::shared_ptr<VTUser> user = userFor(options);
  const std::vector<std::string> scope = pathsCoveredBy(*foldersFor(options, user.get()));
  const std::vector<Hit> all = hitsFor(nullptr, told.query, scope, told.notes);
  told.candidates = all.size();
  MDQueryNotes notesOfUser;
  std::unordered_set<std::string> visible;
  for (Hit& hit : hitsFor(user.get(), told.query, scope, notesOfUser)) {
    visible.insert(std::move(hit.path));
  }
  AccessReason rights(user);
  std::int32_t visited = 0;
  for (const Hit& hit : all) {
    if (!visible.contains(hit.path)) {
      told.drops.push_back({hit.path, rights.of(hit.path)});
    } else if (++visited > VTSearchManager::kMostVisitedHits) {
      told.drops.push_back({hit.path, fmt::format("only the newest {} hits are looked at",
                                                  VTSearchManager::kMostVisitedHits)});
    } else if (!hit.hasKind) {
      told.drops.push_back({hit.path, "no kind takes its type"});
    }
  }
  told.hits = all.size() - told.drops.size();
  return told;
}

void printAsJson(const Explanation& told) {
  Json report;
  report["query"] = displayText(told.query);
  report["parsed"] = Json::array();
  for (const OutlineLine& line : told.outline) {
    report["parsed"].push_back({{"depth", line.depth}, {"text", displayText(line.text)}});
  }
  report["walkedBecause"] =
      told.notes.walkedBecause.empty() ? Json() : Json(displayText(told.notes.walkedBecause));
  report["steps"] = Json::array();
  for (const MDQueryStep& step : told.notes.steps) {
    report["steps"].push_back(
        {{"text", displayText(step.text)}, {"asked", step.asked}, {"left", step.left}});
  }
  report["candidates"] = told.candidates;
  report["hits"] = told.hits;
  report["dropped"] = Json::array();
  for (const Drop& drop : told.drops) {
    report["dropped"].push_back(
        {{"path", displayText(drop.path)}, {"reason", displayText(drop.reason)}});
  }
  fmt::print("{}\n", report.dump(2));
}

void printAsText(const Explanation& told, const SearchOptions& options) {
  const Terminal terminal = Terminal::standardOutput();
  fmt::print("{}\n  {}\n\n{}\n", terminal.bold("Query"), printable(told.query),
             terminal.bold("Understood as"));
  for (const OutlineLine& line : told.outline) {
    fmt::print("{:{}}{}\n", "", 2 + 2 * std::min(line.depth, kDeepestIndent), printable(line.text));
  }
  fmt::print("\n{}\n", terminal.bold(told.notes.walkedBecause.empty()
                                         ? "Answered from the index"
                                         : "Answered by walking the files, since " +
                                               printable(told.notes.walkedBecause)));
  for (const MDQueryStep& step : told.notes.steps) {
    fmt::print("{:>12} of {:<12} {}\n", step.left, step.asked, printable(step.text));
  }
  fmt::print("\n{}\n", terminal.bold(fmt::format(
                           "{} of {} are shown to {}", told.hits, told.candidates,
                           options.user ? printable(*options.user) : std::string("root"))));
  for (std::size_t i = 0; i < std::min(told.drops.size(), kMostShown); ++i) {
    fmt::print("  {}\n    {}\n", printable(told.drops[i].path), terminal.dim(told.drops[i].reason));
  }
  if (told.drops.size() > kMostShown) {
    fmt::print("  and {} more; --json lists all\n", told.drops.size() - kMostShown);
  }
}

}  // namespace

int explainSearch(const SearchOptions& options) {
  return reportingErrors(
      [&] {
        if (Platform::current().identity().geteuid() != 0) {
          throw CommandError{kFailure, "only root can have a search explained"};
        }
        const Explanation told = explain(options);
        if (options.json) {
          printAsJson(told);
        } else {
          printAsText(told, options);
        }
        return told.hits > 0 ? kFound : kNothingFound;
      },
      /*showsLog=*/options.verbose);
}

}  // namespace vt::tool
