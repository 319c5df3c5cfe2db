#include "metadata/watch/WatchedTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST(WatchedTree, KnowsPathsFromNames) {
  WatchedTree tree;
  const WatchedFolder root = tree.addRoot("/r");
  const WatchedFolder b = tree.addChild(tree.addChild(root, "a"), "b");
  EXPECT_EQ(tree.pathOf(b), "/r/a/b");
  EXPECT_EQ(tree.pathOf(tree.addChild(tree.addRoot("/"), "x")), "/x");
  EXPECT_EQ(tree.pathOf(99), std::nullopt);
}

TEST(WatchedTree, FindsFoldersByNameInTheirParent) {
  WatchedTree tree;
  const WatchedFolder root = tree.addRoot("/r");
  const WatchedFolder b = tree.addChild(root, "b");
  const WatchedFolder a = tree.addChild(root, "a");
  const WatchedFolder inner = tree.addChild(a, "b");
  EXPECT_EQ(tree.child(WatchedTree::kNone, "/r"), root);
  EXPECT_EQ(tree.child(root, "b"), b);
  EXPECT_EQ(tree.child(a, "b"), inner);
  EXPECT_EQ(tree.child(b, "b"), WatchedTree::kNone);
  EXPECT_THAT(tree.children(root), ElementsAre(a, b));
  EXPECT_THAT(tree.children(inner), IsEmpty());
}

TEST(WatchedTree, MovesAFolderWithAllBelow) {
  WatchedTree tree;
  const WatchedFolder root = tree.addRoot("/r");
  const WatchedFolder a = tree.addChild(root, "a");
  const WatchedFolder deep = tree.addChild(tree.addChild(a, "x"), "y");
  const WatchedFolder b = tree.addChild(root, "b");
  tree.detach(a);
  EXPECT_EQ(tree.pathOf(deep), std::nullopt);
  EXPECT_EQ(tree.child(root, "a"), WatchedTree::kNone);
  tree.attach(a, b, "c");
  EXPECT_EQ(tree.pathOf(deep), "/r/b/c/x/y");
  EXPECT_EQ(tree.child(b, "c"), a);
}

TEST(WatchedTree, RemovesAFolderWithAllBelow) {
  WatchedTree tree;
  const WatchedFolder root = tree.addRoot("/r");
  const WatchedFolder a = tree.addChild(root, "a");
  const WatchedFolder b = tree.addChild(a, "b");
  tree.setWatch(root, 1);
  tree.setWatch(a, 2);
  tree.setWatch(b, 3);
  EXPECT_THAT(tree.remove(a), UnorderedElementsAre(2, 3));
  EXPECT_FALSE(tree.holds(b));
  EXPECT_EQ(tree.size(), 1U);
  EXPECT_THAT(tree.foldersOf(3), IsEmpty());
  EXPECT_NE(tree.addChild(root, "a"), a);
}

TEST(WatchedTree, KeepsAWatchThatAnotherPlaceOfTheFolderHas) {
  WatchedTree tree;
  const WatchedFolder root = tree.addRoot("/r");
  const WatchedFolder a = tree.addChild(root, "a");
  const WatchedFolder bound = tree.addChild(root, "bound");
  tree.setWatch(a, 2);
  tree.setWatch(bound, 2);
  EXPECT_THAT(tree.foldersOf(2), UnorderedElementsAre(a, bound));
  EXPECT_THAT(tree.remove(a), IsEmpty());
  EXPECT_THAT(tree.foldersOf(2), ElementsAre(bound));
  tree.forgetWatch(2);
  EXPECT_EQ(tree.watchOf(bound), WatchedTree::kNotWatched);
}

TEST(WatchedTree, RemovesAFolderThatIsNowhere) {
  WatchedTree tree;
  const WatchedFolder a = tree.addChild(tree.addRoot("/r"), "a");
  const WatchedFolder b = tree.addChild(a, "b");
  tree.setWatch(b, 5);
  tree.detach(a);
  EXPECT_THAT(tree.remove(a), ElementsAre(5));
  EXPECT_EQ(tree.size(), 1U);
}

}  // namespace
}  // namespace vt
