#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "metadata/engine/FoundPaths.h"
#include "metadata/engine/QueryContents.h"
#include "metadata/engine/RandomFiles.h"
#include "metadata/engine/RandomQuery.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/query/QueryParser.h"

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

class LiveAgreement : public FoundPaths {};

TEST_F(LiveAgreement, IsCompleteOverRandomTreesQueriesUsersAndScopes) {
  const std::size_t pairs = wantedPairs();
  RandomQuery queries(kSeed);
  std::size_t hits = 0;
  std::size_t emptyAnswers = 0;
  std::size_t aboutText = 0;
  std::size_t done = 0;
  for (std::uint32_t tree = 0; done < pairs; ++tree) {
    RandomFiles files(kSeed + tree, kFilesOfATree);
    const IndexedTree index(files.path(), types_, &extractors_);
    for (std::size_t i = 0; i < kPairsOfATree && done < pairs; ++i, ++done) {
      const std::string text = queries.next();
      const auto query = query::parseQuery(text, schema_);
      ASSERT_TRUE(query) << text << ": " << describeQueryError(query.error());
      const QueryContents asked = contentsAskedBy(*query, schema_);
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
      ASSERT_EQ(indexHits(index.path(), *query, judge, scopes), expected)
          << "seed " << kSeed << ", pair " << done << ", user " << uid << ": " << text;
      hits += expected.size();
      emptyAnswers += expected.empty() ? 1 : 0;
    }
  }
  // Agreeing says nothing when there is nothing to agree on.
  EXPECT_GT(hits, 10 * pairs);
  EXPECT_LT(emptyAnswers, pairs * 2 / 3);
  EXPECT_GT(aboutText, pairs / 6);
  std::cout << pairs << " pairs, " << hits << " hits, " << emptyAnswers << " empty answers, "
            << aboutText << " about text, seed " << kSeed << "\n";
}

}  // namespace
}  // namespace vt
