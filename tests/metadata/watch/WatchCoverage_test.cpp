#include <gtest/gtest.h>
#include <stdlib.h>

#include "metadata/live/LiveTree.h"
#include "metadata/watch/FanotifyWatch.h"
#include "metadata/watch/InotifyWatch.h"
#include "metadata/watch/RandomOperations.h"
#include "metadata/watch/RememberedFiles.h"
#include "metadata/watch/WatchedFiles.h"

namespace vt {
namespace {

unsigned rounds() {
  const char* const text = getenv("VISTARO_ROUNDS");
  return text != nullptr ? static_cast<unsigned>(std::stoul(text)) : 200;
}

template <class Watch>
class WatchCoverage : public testing::Test {};
using Watches = testing::Types<FanotifyWatch, InotifyWatch>;
TYPED_TEST_SUITE(WatchCoverage, Watches);

// Operations go on between what is told and the look at it, as they do in life.
TYPED_TEST(WatchCoverage, LeavesNothingOutWhateverIsDone) {
  for (unsigned round = 0; round < rounds(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const LiveTree tree;
    const LiveTree outside;
    RandomOperations operations(tree.path(), outside.path(), round);
    for (int i = 0; i < 20; ++i) operations.one();
    WatchedFiles<TypeParam> watched({tree.path()});
    if (!watched.failure().empty()) GTEST_SKIP() << watched.failure();
    RememberedFiles files(tree.path());
    std::mt19937 random(round);
    for (int batch = 0; batch < 6; ++batch) {
      for (unsigned i = random() % 12; i > 0; --i) operations.one();
      if (random() % 2 == 0) watched.collect();
      for (unsigned i = random() % 6; i > 0; --i) operations.one();
      const FileChanges changes = watched.collectAndTake();
      for (unsigned i = random() % 4; i > 0; --i) operations.one();
      files.apply(changes);
    }
    while (const std::optional<WatchBatch> batch = watched.nextAfterQuiet()) {
      files.apply(batch->changes);
    }
    ASSERT_EQ(files.difference(), "");
  }
}

}  // namespace
}  // namespace vt
