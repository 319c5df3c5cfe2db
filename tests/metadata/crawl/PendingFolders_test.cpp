#include "metadata/crawl/PendingFolders.h"

#include <gtest/gtest.h>

namespace vt {
namespace {

CrawledEntry entry(std::string_view name, CrawledFolderId id) {
  CrawledEntry result;
  result.name = name;
  result.folder = id;
  result.status.device = 7;
  result.status.inode = id;
  return result;
}

PendingFolder root(const char* path) {
  PendingFolder result;
  result.id = 1;
  result.device = 7;
  result.path = path;
  return result;
}

TEST(PendingFolders, GivesTheLastAddedFirstWithItsWholePath) {
  PendingFolders folders;
  folders.addRoot(root("/srv/files"));
  const PendingFolder first = folders.take();
  EXPECT_EQ(first.path, "/srv/files");
  CrawledEntry entries[] = {entry("a", 2), entry("no folder", kNoCrawledFolder), entry("bc", 3)};
  folders.addFolders(first, entries);
  const PendingFolder last = folders.take();
  EXPECT_EQ(last.id, 3U);
  EXPECT_EQ(last.inode, 3U);
  EXPECT_EQ(last.path, "/srv/files/bc");
  CrawledEntry deeper[] = {entry("d", 4)};
  folders.addFolders(last, deeper);
  EXPECT_EQ(folders.take().path, "/srv/files/bc/d");
  EXPECT_EQ(folders.take().path, "/srv/files/a");
  EXPECT_TRUE(folders.isEmpty());
}

TEST(PendingFolders, PutsOneSlashBehindTheRootOfAll) {
  PendingFolders folders;
  folders.addRoot(root("/"));
  const PendingFolder first = folders.take();
  EXPECT_EQ(first.path, "/");
  CrawledEntry entries[] = {entry("usr", 2)};
  folders.addFolders(first, entries);
  EXPECT_EQ(folders.take().path, "/usr");
}

TEST(PendingFolders, KnowsWhereAnotherFileSystemBegins) {
  PendingFolders folders;
  folders.addRoot(root("/"));
  CrawledEntry entries[] = {entry("usr", 2), entry("mnt", 3)};
  entries[1].status.device = 8;
  folders.addFolders(folders.take(), entries);
  EXPECT_TRUE(folders.take().isMountPoint);
  EXPECT_FALSE(folders.take().isMountPoint);
}

}  // namespace
}  // namespace vt
