#include "metadata/watch/ChangeCompaction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ChangeCompaction, SaysNothingTwice) {
  const FileChanges changes = compactedChanges({.entries = {"/r/b", "/r/a", "/r/b"},
                                                .folders = {"/r/f", "/r/f"},
                                                .trees = {"/r/t", "/r/t"}});
  EXPECT_THAT(changes.entries, ElementsAre("/r/a", "/r/b"));
  EXPECT_THAT(changes.folders, ElementsAre("/r/f"));
  EXPECT_THAT(changes.trees, ElementsAre("/r/t"));
}

TEST(ChangeCompaction, LeavesOutWhatATreeCovers) {
  const FileChanges changes = compactedChanges({.entries = {"/r/t", "/r/t/a", "/r/t b", "/r/tb/c"},
                                                .folders = {"/r/t/f", "/r/t"},
                                                .trees = {"/r/t/u", "/r/t", "/r/t b/v"}});
  EXPECT_THAT(changes.entries, ElementsAre("/r/t b", "/r/tb/c"));
  EXPECT_THAT(changes.folders, IsEmpty());
  EXPECT_THAT(changes.trees, ElementsAre("/r/t", "/r/t b/v"));
}

TEST(ChangeCompaction, LeavesOutEntriesOfAFolderThatIsListedButNotTheFolder) {
  const FileChanges changes = compactedChanges(
      {.entries = {"/r/f", "/r/f/a", "/r/f/a/b"}, .folders = {"/r/f"}, .trees = {}});
  EXPECT_THAT(changes.entries, ElementsAre("/r/f", "/r/f/a/b"));
}

TEST(ChangeCompaction, MakesTooManyFoldersTheOneThatHoldsThem) {
  const FileChanges many{.entries = {"/r/x/a/1", "/r/x/b/1"}, .folders = {"/r/x/c"}, .trees = {}};
  EXPECT_THAT(compactedChanges(many, 3).trees, IsEmpty());
  const FileChanges changes = compactedChanges(many, 2);
  EXPECT_THAT(changes.trees, ElementsAre("/r/x"));
  EXPECT_THAT(changes.entries, IsEmpty());
  EXPECT_THAT(changes.folders, IsEmpty());
}

TEST(ChangeCompaction, CountsTheFoldersOfTrees) {
  const FileChanges changes =
      compactedChanges({.entries = {}, .folders = {}, .trees = {"/a", "/b/c", "/b/d"}}, 2);
  EXPECT_THAT(changes.trees, ElementsAre("/"));
}

TEST(ChangeCompaction, WorksBelowTheTop) {
  const FileChanges changes =
      compactedChanges({.entries = {"/a", "/"}, .folders = {}, .trees = {"/b"}});
  EXPECT_THAT(changes.entries, ElementsAre("/", "/a"));
  EXPECT_TRUE(compactedChanges({}).empty());
  EXPECT_THAT(compactedChanges({.entries = {"/a"}, .folders = {}, .trees = {"/"}}).entries,
              IsEmpty());
}

}  // namespace
}  // namespace vt
