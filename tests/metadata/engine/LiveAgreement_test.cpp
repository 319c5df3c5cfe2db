#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "metadata/engine/IndexHits.h"
#include "metadata/engine/QueryContents.h"
#include "metadata/engine/RandomFiles.h"
#include "metadata/engine/RandomQuery.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveSearch.h"
#include "metadata/live/SearchScopes.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/query/QueryParser.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

constexpr std::uint32_t kSeed = 20261121;
// Some seconds of work; VISTARO_PAIRS sets another number of pairs of query and user.
constexpr std::size_t kPairs = 1500;
constexpr std::size_t kPairsOfATree = 250;
constexpr std::size_t kFilesOfATree = 220;

std::size_t wantedPairs() {
  const char* wanted = std::getenv("VISTARO_PAIRS");
  return wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : kPairs;
}

class LiveAgreement : public testing::Test {
 protected:
  std::vector<std::string> liveHits(const query::Query& query, const AccessJudge& judge,
                                    const std::vector<std::string>& scopes) const {
    const query::QueryMatcher matcher(query, schema_, context_);
    const LiveHits hits = LiveSearch(matcher, schema_, tables_).run(scopes, judge.who()).hits;
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < hits.size(); ++i) paths.push_back(hits.pathOf(hits[i]));
    return paths;
  }

  std::vector<std::string> indexHits(const IndexedTree& index, const query::Query& query,
                                     const AccessJudge& judge,
                                     const std::vector<std::string>& scopes) const {
    std::vector<IndexedScope> indexed;
    for (const SearchScope& scope : findSearchScopes(scopes, judge).usable) {
      const auto folder = indexedFolderAt(index.index()->segment, scope.canonicalPath);
      EXPECT_TRUE(folder) << scope.canonicalPath;
      indexed.push_back({folder.value_or(0), scope.path, scope.canonicalPath});
    }
    std::shared_ptr<CatalogueReader> catalogue = valueOrThrow(CatalogueReader::open(index.path()));
    throwIf(catalogue->lookAnew());
    const auto open = index.index();
    auto contents = valueOrThrow(
        IndexedContents::of(std::move(catalogue), open->identity, open->segment.rowCount()));
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

  const ContentTypes types_ = shippedTypes();
  const Extractors extractors_ = builtInExtractors(types_);
  const ResultGroups groups_{types_};
  const TypeTables tables_{types_, groups_};
  const query::AttributeSchema schema_ = shippedSchema();
  const query::EvaluationContext context_{Date{std::chrono::seconds{RandomFiles::kNow}},
                                          query::Calendar()};
};

TEST_F(LiveAgreement, IsCompleteOverRandomTreesQueriesUsersAndScopes) {
  const std::size_t pairs = wantedPairs();
  RandomQuery queries(kSeed);
  std::size_t hits = 0;
  std::size_t emptyAnswers = 0;
  std::size_t aboutText = 0;
  std::size_t leftToWalks = 0;
  std::size_t done = 0;
  for (std::uint32_t tree = 0; done < pairs; ++tree) {
    RandomFiles files(kSeed + tree, kFilesOfATree);
    const IndexedTree index(files.path(), types_, &extractors_);
    for (std::size_t i = 0; i < kPairsOfATree && done < pairs; ++i, ++done) {
      const std::string text = queries.next();
      const auto query = query::parseQuery(text, schema_);
      ASSERT_TRUE(query) << text << ": " << describeQueryError(query.error());
      const QueryContents asked = contentsAskedBy(*query, schema_);
      if (!asked.canBeToldByTerms) {
        ++leftToWalks;
        continue;
      }
      aboutText += asked.asksForText ? 1 : 0;
      const std::uint32_t uid =
          files.pick(5) == 0 ? 0 : RandomFiles::kFirstUid + files.pick(RandomFiles::kUsers);
      const AccessJudge judge(
          Credentials(uid, RandomFiles::kFirstGid + files.pick(RandomFiles::kGroups),
                      {RandomFiles::kFirstGid + files.pick(RandomFiles::kGroups)}));
      std::vector<std::string> scopes = {files.path()};
      for (std::uint32_t more = files.pick(3); more > 0; --more) {
        const std::size_t count = files.folders().size();
        const std::string& folder = files.folders()[files.pick(static_cast<std::uint32_t>(count))];
        scopes.push_back(folder + (files.pick(3) == 0 ? "/." : ""));
        if (files.pick(2) == 0) scopes.erase(scopes.begin());
      }
      const std::vector<std::string> expected = liveHits(*query, judge, scopes);
      ASSERT_EQ(indexHits(index, *query, judge, scopes), expected)
          << "seed " << kSeed << ", pair " << done << ", user " << uid << ": " << text;
      hits += expected.size();
      emptyAnswers += expected.empty() ? 1 : 0;
    }
  }
  // Agreeing says nothing when there is nothing to agree on.
  EXPECT_GT(hits, 10 * pairs);
  EXPECT_LT(emptyAnswers, pairs * 2 / 3);
  EXPECT_GT(aboutText, pairs / 6);
  EXPECT_LT(leftToWalks, pairs / 10);
  std::cout << pairs << " pairs, " << hits << " hits, " << emptyAnswers << " empty answers, "
            << aboutText << " about text, " << leftToWalks << " left to walks, seed " << kSeed
            << "\n";
}

}  // namespace
}  // namespace vt
