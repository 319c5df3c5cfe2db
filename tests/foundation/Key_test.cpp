#include "foundation/Key.h"

#include <gtest/gtest.h>

#include "foundation/KeyCache.h"

namespace vt {
namespace {

TEST(Key, SharesItsTextWithItsCopies) {
  const Key key("kMDItemDisplayName");
  const Key copy = key;  // NOLINT(performance-unnecessary-copy-initialization): the subject
  EXPECT_EQ(&copy.str(), &key.str());
  EXPECT_EQ(copy, key);
}

TEST(Key, EqualsAnotherOfTheSameText) {
  EXPECT_EQ(Key("a"), Key("a"));
  EXPECT_FALSE(Key("a") == Key("b"));
  EXPECT_EQ(Key("a"), "a");
  EXPECT_EQ(Key(std::string_view("a\0b", 3)).str().size(), 3U);
}

TEST(KeyCache, GivesEqualTextTheSameKeyAndNeverAWrongOne) {
  KeyCache cache;
  EXPECT_EQ(&cache.keyFor("title").str(), &cache.keyFor("title").str());
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 2000; ++i)
      EXPECT_EQ(cache.keyFor(std::to_string(i)).str(), std::to_string(i));
  }
}

}  // namespace
}  // namespace vt
