#include "metadata/watch/RootRights.h"

#include <gtest/gtest.h>
#include <sys/acl.h>
#include <sys/stat.h>

#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

class RootRightsTest : public testing::Test {
 protected:
  RootRightsTest() {
    tree_.folder("above/root");
    haveChanged();
  }

  /// Whether they differ from what they were at the last call.
  bool haveChanged() {
    const std::string before = std::exchange(before_, rootRights({tree_ / "above/root"}));
    return before != before_;
  }

  LiveTree tree_;
  std::string before_;
};

TEST_F(RootRightsTest, AreTheSameWhileOnlyEntriesChange) {
  tree_.file("above/root/file");
  tree_.file("above/file");
  tree_.file("file");
  EXPECT_FALSE(haveChanged());
}

TEST_F(RootRightsTest, ChangeWithModesAndListsOfTheRootAndAbove) {
  ASSERT_EQ(chmod((tree_ / "above/root").c_str(), 0700), 0);
  EXPECT_TRUE(haveChanged());
  ASSERT_EQ(chmod((tree_ / "above").c_str(), 0711), 0);
  EXPECT_TRUE(haveChanged());
  const acl_t list = acl_from_text("u::rwx,u:2001:--x,g::---,m::--x,o::---");
  ASSERT_EQ(acl_set_file((tree_ / "above").c_str(), ACL_TYPE_ACCESS, list), 0);
  acl_free(list);
  EXPECT_TRUE(haveChanged());
  EXPECT_FALSE(haveChanged());
}

TEST_F(RootRightsTest, ChangeWhenTheRootIsAnotherFolder) {
  std::filesystem::rename(tree_ / "above", tree_ / "away");
  EXPECT_TRUE(haveChanged());
  tree_.folder("above/root");
  EXPECT_TRUE(haveChanged());
}

}  // namespace
}  // namespace vt
