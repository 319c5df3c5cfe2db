#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "metadata/engine/IndexHits.h"
#include "metadata/engine/OpenIndex.h"
#include "metadata/engine/RandomFiles.h"
#include "metadata/extract/Extractors.h"
#include "metadata/live/LiveSearch.h"
#include "metadata/live/SearchScopes.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/query/QueryParser.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {

/// The first line that differs, of both; "" when none does.
inline std::string firstDifference(const std::vector<std::string>& some,
                                   const std::vector<std::string>& others) {
  const auto [one, other] = std::ranges::mismatch(some, others);
  if (one == some.end() && other == others.end()) return "";
  return fmt::format("updated: {}\nfresh:   {}", one == some.end() ? "" : *one,
                     other == others.end() ? "" : *other);
}

/// The paths that a query finds, in order: by a walk of the files, and by an index.
class FoundPaths : public testing::Test {
 protected:
  std::vector<std::string> liveHits(const query::Query& query, const AccessJudge& judge,
                                    const std::vector<std::string>& scopes) const {
    const query::QueryMatcher matcher(query, schema_, context_);
    const LiveHits hits = LiveSearch(matcher, schema_, tables_).run(scopes, judge.who()).hits;
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < hits.size(); ++i) paths.push_back(hits.pathOf(hits[i]));
    return paths;
  }

  /// Of the newest generation of the index in `folder`.
  std::shared_ptr<const OpenIndex> indexIn(const std::string& folder) const {
    return openIndex(valueOrThrow(valueOrThrow(IndexFolder::open(folder)).current()), types_);
  }

  std::vector<std::string> indexHits(const std::string& indexFolder, const query::Query& query,
                                     const AccessJudge& judge,
                                     const std::vector<std::string>& scopes) const {
    const auto open = indexIn(indexFolder);
    std::vector<IndexedScope> indexed;
    for (const SearchScope& scope : findSearchScopes(scopes, judge).usable) {
      const auto folder = indexedFolderAt(open->folders(), scope.canonicalPath);
      EXPECT_TRUE(folder) << scope.canonicalPath;
      indexed.push_back({folder.value_or(0), scope.path, scope.canonicalPath});
    }
    std::shared_ptr<CatalogueReader> catalogue = valueOrThrow(CatalogueReader::open(indexFolder));
    throwIf(catalogue->lookAnew());
    auto contents = valueOrThrow(IndexedContents::of(std::move(catalogue), *open));
    if (!contents) throw std::runtime_error("nothing is said of the rows");
    EXPECT_FALSE(contents->hasPending());
    const IndexHits hits(open, std::make_shared<const IndexedContents>(std::move(*contents)),
                         tables_, indexed, judge, query, schema_, context_);
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < hits.size(); ++i) {
      Value path;
      EXPECT_TRUE(hits.files().tell(LiveAttribute::kPath, hits.rowAt(i), path));
      paths.push_back(*path.get<std::string>());
    }
    return paths;
  }

  /// All that an index tells of all files, in order: a line for each.
  std::vector<std::string> allIn(const std::string& indexFolder, const std::string& root) const {
    const auto open = indexIn(indexFolder);
    const auto query = query::parseQuery("kMDItemFSName == \"*\"", schema_);
    const AccessJudge judge(Credentials(0, 0, {}));
    const IndexHits hits(open, nullptr, tables_,
                         {{indexedFolderAt(open->folders(), root).value(), root, root}}, judge,
                         *query, schema_, context_);
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < hits.size(); ++i) {
      const std::size_t row = hits.rowAt(i);
      const FileStatus s = hits.files().status(row);
      Value path;
      Value count;
      hits.files().tell(LiveAttribute::kPath, row, path);
      const bool isFolder = hits.files().tell(LiveAttribute::kEntryCount, row, count);
      lines.push_back(fmt::format(
          "{} type {} mode {:o} owner {}:{} size {}/{} times {} {} {} {} entries {}",
          *path.get<std::string>(), hits.files().type(row), s.ownership.mode, s.ownership.uid,
          s.ownership.gid, s.sizeInBytes, s.allocatedBytes, s.modified.time_since_epoch().count(),
          s.accessed.time_since_epoch().count(), s.attributesChanged.time_since_epoch().count(),
          s.created ? s.created->time_since_epoch().count() : -1,
          isFolder ? *count.get<std::uint64_t>() : 0));
    }
    return lines;
  }

  const ContentTypes types_ = shippedTypes();
  const Extractors extractors_ = builtInExtractors(types_);
  const ResultGroups groups_{types_};
  const TypeTables tables_{types_, groups_};
  const query::AttributeSchema schema_ = shippedSchema();
  const query::EvaluationContext context_{Date{std::chrono::seconds{RandomFiles::kNow}},
                                          query::Calendar()};
};

}  // namespace vt
