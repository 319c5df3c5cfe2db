#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <span>
#include <vector>

#include "metadata/engine/IndexHits.h"
#include "metadata/engine/RandomFiles.h"
#include "metadata/engine/RandomQuery.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/query/QueryParser.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

/// A copy of a column with some numbers replaced.
template <class Number>
std::vector<Number> damaged(std::span<const Number> column, std::mt19937& random) {
  std::vector<Number> copy(column.begin(), column.end());
  for (Number& number : copy) {
    if (random() % 8 != 0) continue;
    number = static_cast<Number>(random() % 2 == 0 ? random() : random() % (2 * copy.size()));
  }
  return copy;
}

// That nothing outside of the columns is read is for the address sanitizer to see.
TEST(DamagedColumns, GiveWrongAnswersAtWorst) {
  constexpr std::uint32_t kSeed = 20261121;
  const ContentTypes types = shippedTypes();
  const ResultGroups groups(types);
  const TypeTables tables{types, groups};
  const query::AttributeSchema schema = shippedSchema();
  const query::EvaluationContext context{Date{std::chrono::seconds{RandomFiles::kNow}},
                                         query::Calendar()};
  RandomFiles files(kSeed, 200);
  const std::shared_ptr<const OpenIndex> whole = IndexedTree(files.path(), types).index();
  std::mt19937 random(kSeed);
  RandomQuery queries(kSeed);
  std::size_t hits = 0;
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    const SegmentColumns& good = whole->columns.base;
    std::vector<std::uint32_t> offsets(good.rowCount() + 1);
    for (std::size_t row = 0; row <= good.rowCount(); ++row) {
      offsets[row] = static_cast<std::uint32_t>(good.foldedNames.offsetOf(row));
    }
    offsets = damaged(std::span<const std::uint32_t>(offsets), random);
    const auto modified = damaged(good.modified, random);
    const auto rowTypes = damaged(good.types, random);
    const auto folders = damaged(good.folders, random);
    const auto classes = damaged(good.accessClasses, random);
    const auto folderRows = damaged(good.folderRows, random);
    const auto foldersByRow = damaged(good.foldersByRow, random);
    const auto parents = damaged(good.parents, random);
    const auto folderClasses = damaged(good.folderAccessClasses, random);
    auto bad = std::make_shared<OpenIndex>(*whole);
    bad->columns.base.foldedNames = TextColumn(good.foldedNames.text(), offsets);
    bad->columns.base.modified = modified;
    bad->columns.base.types = rowTypes;
    bad->columns.base.folders = folders;
    bad->columns.base.accessClasses = classes;
    bad->columns.base.folderRows = folderRows;
    bad->columns.base.foldersByRow = foldersByRow;
    bad->columns.base.parents = parents;
    bad->columns.base.folderAccessClasses = folderClasses;
    const std::uint32_t scope = indexedFolderAt(good, files.path()).value();
    indexedFolderAt(bad->columns.base, files.path());
    for (int i = 0; i < 20; ++i) {
      const auto query = query::parseQuery(queries.next(), schema);
      const AccessJudge judge(Credentials(RandomFiles::kFirstUid, RandomFiles::kFirstGid, {}));
      const IndexHits found(bad, nullptr, tables, {{scope, files.path(), files.path()}}, judge,
                            *query, schema, context);
      for (std::size_t at = 0; at < found.size(); ++at) {
        Value value;
        EXPECT_TRUE(found.files().tell(LiveAttribute::kPath, found.rowAt(at), value));
        found.files().tell(LiveAttribute::kEntryCount, found.rowAt(at), value);
        found.prefetchAfter(at);
      }
      hits += found.size();
    }
  }
  EXPECT_GT(hits, 1000U);
}

}  // namespace
}  // namespace vt
