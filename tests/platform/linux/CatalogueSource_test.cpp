#include "platform/linux/CatalogueSource.h"

#include <gtest/gtest.h>

#include "metadata/catalogue/CatalogueFile.h"
#include "metadata/indexing/IndexedTree.h"
#include "metadata/live/LiveTree.h"
#include "metadata/types/ShippedTypes.h"

namespace vt {
namespace {

class CatalogueSourceTest : public testing::Test {
 protected:
  /// How many contents have the word; -1 when nobody knows.
  int countOf(const char* word) {
    const auto contents = source_.contentsOf(*indexed_.index());
    if (!contents) return -1;
    const auto count = static_cast<int>((*contents)->withWords(contentQueryOf(word, 0)).count());
    (*contents)->lookAway();
    return count;
  }

  const ContentTypes types_ = shippedTypes();
  const Extractors extractors_ = builtInExtractors(types_);
  LiveTree tree_;
  IndexedTree indexed_{types_, &extractors_};
  CatalogueSource source_{indexed_.path()};
};

TEST_F(CatalogueSourceTest, SeesWhatHasBeenLookedIntoSince) {
  tree_.file("one.txt", "words");
  indexed_.run({tree_.path()});
  EXPECT_EQ(countOf("words"), 1);
  tree_.file("two.txt", "words");
  indexed_.run({tree_.path()});
  EXPECT_EQ(countOf("words"), 2);
}

TEST_F(CatalogueSourceTest, KeepsWhatItHasWhileNobodyWrites) {
  tree_.file("one.txt", "words");
  indexed_.run({tree_.path()});
  const auto index = indexed_.index();
  const auto first = source_.contentsOf(*index);
  const auto second = source_.contentsOf(*index);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(*first, *second);
}

TEST_F(CatalogueSourceTest, OpensACatalogueThatWasMadeAnew) {
  tree_.file("one.txt", "words");
  indexed_.run({tree_.path()});
  EXPECT_EQ(countOf("words"), 1);
  ASSERT_FALSE(removeCatalogue(indexed_.path()));
  EXPECT_EQ(countOf("words"), -1);
  tree_.file("one.txt", "other words");
  indexed_.run({tree_.path()});
  EXPECT_EQ(countOf("other"), 1);
}

TEST_F(CatalogueSourceTest, SaysThatThereIsNoTextBeforeFilesWereLookedInto) {
  Indexer(indexed_.folder(), indexed_.lock(), types_)
      .run({tree_.path()}, [](const auto&) { return true; })
      .value();
  const auto contents = source_.contentsOf(*indexed_.index());
  ASSERT_FALSE(contents);
  EXPECT_EQ(contents.error(), "the index holds no text");
}

}  // namespace
}  // namespace vt
