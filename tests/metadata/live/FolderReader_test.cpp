#include "metadata/live/FolderReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <map>
#include <set>

#include "metadata/live/LiveTree.h"

namespace vt {
namespace {

std::map<std::string, EntryKind> listing(const std::string& path) {
  const Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::map<std::string, EntryKind> entries;
  EXPECT_TRUE(FolderReader().list(folder.get(), [&](const char* name, EntryKind kind) {
    EXPECT_TRUE(entries.emplace(name, kind).second) << "listed twice";
  }));
  return entries;
}

TEST(FolderReader, TellsFilesFoldersLinksAndSpecialFilesApart) {
  const LiveTree tree;
  tree.file("file");
  tree.folder("folder");
  tree.link("link", "nowhere");
  ASSERT_EQ(mkfifo((tree / "pipe").c_str(), 0644), 0);
  EXPECT_THAT(listing(tree.path()),
              testing::ElementsAre(testing::Pair("file", EntryKind::kFile),
                                   testing::Pair("folder", EntryKind::kFolder),
                                   testing::Pair("link", EntryKind::kLink),
                                   testing::Pair("pipe", EntryKind::kSpecial)));
}

TEST(FolderReader, GivesNamesToTheByte) {
  const LiveTree tree;
  const std::set<std::string> names = {
      "line\nfeed", "\xff\xfe", std::string(255, 'x'), " ", "...", ".hidden", "a\tb", "\"'\\"};
  for (const std::string& name : names) tree.file(name);
  std::set<std::string> listed;
  for (const auto& [name, kind] : listing(tree.path())) listed.insert(name);
  EXPECT_EQ(listed, names);
}

TEST(FolderReader, ListsMoreThanOneBufferHolds) {
  const LiveTree tree;
  for (int i = 0; i < 20'000; ++i) {
    const std::string path = tree / ("entry number " + std::to_string(i));
    ASSERT_EQ(mknod(path.c_str(), S_IFREG | 0644, 0), 0);
  }
  EXPECT_EQ(listing(tree.path()).size(), 20'000U);
}

TEST(FolderReader, FindsNothingInWhatIsNoFolder) {
  const LiveTree tree;
  int entries = 0;
  const Descriptor file(open(tree.file("file").c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE(FolderReader().list(file.get(), [&](const char*, EntryKind) { ++entries; }));
  EXPECT_FALSE(FolderReader().list(-1, [&](const char*, EntryKind) { ++entries; }));
  EXPECT_EQ(entries, 0);
}

}  // namespace
}  // namespace vt
