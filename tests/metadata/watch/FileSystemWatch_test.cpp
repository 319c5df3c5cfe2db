#include "metadata/watch/FileSystemWatch.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "metadata/live/LiveTree.h"
#include "metadata/watch/FanotifyWatch.h"
#include "metadata/watch/InotifyWatch.h"
#include "metadata/watch/WatchedFiles.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// What every watch tells, whatever it is.
template <class Watch>
class FileSystemWatchTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!watched_.failure().empty()) GTEST_SKIP() << watched_.failure();
  }

  /// What is told, as words behind which the paths stand without the tree's own.
  std::vector<std::string> told() { return words(watched_.collectAndTake()); }
  std::vector<std::string> words(const FileChanges& changes) const {
    std::vector<std::string> words;
    const auto add = [&](const char* kind, const std::vector<std::string>& paths) {
      for (const std::string& path : paths) words.push_back(kind + path.substr(prefix()));
    };
    add("", changes.entries);
    add("list ", changes.folders);
    add("tree ", changes.trees);
    return words;
  }
  std::size_t prefix() const { return tree_.path().size() + 1; }
  void append(const std::string& path) {
    const Descriptor file(open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    ASSERT_EQ(write(file.get(), "x", 1), 1);
  }

  struct Made {
    explicit Made(const LiveTree& tree) {
      for (const char* name : {"file", "old/file", "old/inner/file", "deep/a/b/c/file"}) {
        tree.file(name);
      }
    }
  };

  LiveTree tree_;
  Made made_{tree_};
  LiveTree outside_;
  WatchedFiles<Watch> watched_{{tree_.path()}, {tree_ / "ignored"}};
};

using Watches = testing::Types<FanotifyWatch, InotifyWatch>;
TYPED_TEST_SUITE(FileSystemWatchTest, Watches);

TYPED_TEST(FileSystemWatchTest, TellsNothingWhenNothingHappens) {
  EXPECT_THAT(this->told(), IsEmpty());
  EXPECT_EQ(this->watched_.watch().due(), std::nullopt);
}

TYPED_TEST(FileSystemWatchTest, TellsWhatComesAndGoes) {
  this->tree_.file("new");
  this->tree_.file("deep/a/b/c/new");
  std::filesystem::remove(this->tree_ / "file");
  EXPECT_THAT(this->told(), ElementsAre("deep/a/b/c/new", "file", "new"));
}

TYPED_TEST(FileSystemWatchTest, TellsANewFolderAsATree) {
  this->tree_.file("new/a/b/file");
  EXPECT_THAT(this->told(), ElementsAre("tree new"));
  this->tree_.file("new/a/b/other");
  EXPECT_THAT(this->told(), ElementsAre("new/a/b/other"));
}

TYPED_TEST(FileSystemWatchTest, TellsAFolderThatIsGoneAsATree) {
  std::filesystem::remove_all(this->tree_ / "old");
  EXPECT_THAT(this->told(), ElementsAre("tree old"));
}

TYPED_TEST(FileSystemWatchTest, TellsARenamedFolderAsOneChange) {
  std::filesystem::rename(this->tree_ / "deep/a", this->tree_ / "old/moved");
  EXPECT_THAT(this->told(), ElementsAre("deep/a", "old/moved"));
  this->append(this->tree_ / "old/moved/b/c/file");
  EXPECT_THAT(this->told(), ElementsAre("old/moved/b/c/file"));
}

TYPED_TEST(FileSystemWatchTest, TellsAFolderThatCameFromElsewhereAndOneThatWent) {
  this->outside_.file("far/file");
  std::filesystem::rename(this->outside_ / "far", this->tree_ / "near");
  std::filesystem::rename(this->tree_ / "old", this->outside_ / "old");
  std::vector<std::string> told = this->told();
  // Either is enough of what nothing is known of.
  if (told[0] == "near") told = {told[1], "tree near"};
  EXPECT_THAT(told, ElementsAre("old", "tree near"));
  this->append(this->outside_ / "old/file");
  EXPECT_THAT(this->told(), IsEmpty());
  this->append(this->tree_ / "near/file");
  EXPECT_THAT(this->told(), ElementsAre("near/file"));
}

TYPED_TEST(FileSystemWatchTest, TellsAFileThatIsWrittenOnceItIsClosed) {
  const Descriptor file(open((this->tree_ / "file").c_str(), O_WRONLY | O_CLOEXEC));
  ASSERT_EQ(write(file.get(), "text", 4), 4);
  EXPECT_THAT(this->told(), IsEmpty());
  const_cast<Descriptor&>(file).close();
  EXPECT_THAT(this->told(), ElementsAre("file"));
}

TYPED_TEST(FileSystemWatchTest, TellsAFileThatIsNotClosedASecondAfterItWasWritten) {
  const Descriptor file(open((this->tree_ / "file").c_str(), O_WRONLY | O_CLOEXEC));
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(write(file.get(), "text", 4), 4);
    EXPECT_THAT(this->told(), IsEmpty());
    EXPECT_THAT(this->told(), ElementsAre("file"));
  }
}

TYPED_TEST(FileSystemWatchTest, TellsChangesOfModeOwnerListTimesAndExtendedAttributes) {
  const std::string path = this->tree_ / "file";
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_THAT(this->told(), ElementsAre("file"));
  ASSERT_EQ(setxattr(path.c_str(), "user.comment", "x", 1, 0), 0);
  EXPECT_THAT(this->told(), ElementsAre("file"));
  const acl_t list = acl_from_text("u::rw-,u:2001:r--,g::---,m::r--,o::---");
  ASSERT_EQ(acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list), 0);
  acl_free(list);
  EXPECT_THAT(this->told(), ElementsAre("file"));
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), nullptr, 0), 0);
  EXPECT_THAT(this->told(), ElementsAre("file"));
  ASSERT_EQ(chmod((this->tree_ / "old").c_str(), 0700), 0);
  EXPECT_THAT(this->told(), ElementsAre("old"));
}

TYPED_TEST(FileSystemWatchTest, SaysNothingOfReading) {
  std::ifstream(this->tree_ / "file").get();
  std::filesystem::directory_iterator listing(this->tree_ / "old");
  EXPECT_THAT(this->told(), IsEmpty());
}

TYPED_TEST(FileSystemWatchTest, SaysNothingOfWhatIsOutsideOrIgnored) {
  this->outside_.file("other");
  this->tree_.file("ignored/file");
  const std::vector<std::string> told = this->told();
  EXPECT_THAT(told, IsEmpty());
  this->tree_.file("ignored/more");
  EXPECT_THAT(this->told(), IsEmpty());
}

TYPED_TEST(FileSystemWatchTest, IsNotPutOffByWhatHappensOutside) {
  this->tree_.file("new");
  this->watched_.collect();
  const auto due = this->watched_.watch().due();
  this->watched_.pass(std::chrono::milliseconds(40));
  this->outside_.file("other/file");
  this->watched_.collect();
  EXPECT_EQ(this->watched_.watch().due(), due);
}

TYPED_TEST(FileSystemWatchTest, TellsNamesOfAnyBytes) {
  this->tree_.file("a\n b\xff");
  EXPECT_THAT(this->told(), ElementsAre("a\n b\xff"));
}

TYPED_TEST(FileSystemWatchTest, TellsOfLinksAndOfTheNameThatWasUsedOfAFile) {
  this->tree_.link("link", "file");
  EXPECT_THAT(this->told(), ElementsAre("link"));
  std::filesystem::create_hard_link(this->tree_ / "file", this->tree_ / "old/again");
  EXPECT_THAT(this->told(), testing::Contains("old/again"));
  this->append(this->tree_ / "old/again");
  EXPECT_THAT(this->told(), ElementsAre("old/again"));
}

TYPED_TEST(FileSystemWatchTest, MakesAStormOfFilesTheirFolder) {
  const Descriptor folder(open((this->tree_ / "old").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  for (int i = 0; i < 6000; ++i) {
    makeFileIn(folder.get(), std::to_string(i).c_str());
    // Before the kernel has more to tell than it keeps: each file is two events, or three.
    if (i % 2000 == 0) this->watched_.collect();
  }
  EXPECT_THAT(this->told(), ElementsAre("list old"));
}

TYPED_TEST(FileSystemWatchTest, TellsAgainWhatWasToldBeforeItsFolderMoved) {
  this->append(this->tree_ / "old/inner/file");
  EXPECT_THAT(this->told(), ElementsAre("old/inner/file"));
  std::filesystem::rename(this->tree_ / "old", this->tree_ / "young");
  EXPECT_THAT(this->told(), ElementsAre("old", "tree young"));
}

TYPED_TEST(FileSystemWatchTest, TellsAFolderThatMovedWhileAllWasLookedAtAsATree) {
  this->watched_.watch().beginLook();
  this->watched_.watch().collect(this->watched_.now());
  std::filesystem::rename(this->tree_ / "old", this->tree_ / "young");
  EXPECT_THAT(this->told(), ElementsAre("old", "tree young"));
}

TYPED_TEST(FileSystemWatchTest, TellsFoldersThatChangedPlacesSoThatBothAreKnown) {
  ASSERT_EQ(renameat2(AT_FDCWD, (this->tree_ / "old").c_str(), AT_FDCWD,
                      (this->tree_ / "deep").c_str(), RENAME_EXCHANGE),
            0);
  std::string all;
  for (const std::string& word : this->told()) all += word + " ";
  EXPECT_THAT(
      all, testing::AnyOf("deep old ", "tree deep tree old ", "deep tree old ", "old tree deep "));
  this->append(this->tree_ / "deep/inner/file");
  this->append(this->tree_ / "old/a/b/c/file");
  EXPECT_THAT(this->told(), ElementsAre("deep/inner/file", "old/a/b/c/file"));
}

TYPED_TEST(FileSystemWatchTest, FollowsPathsLongerThanTheSystemTakes) {
  const Descriptor root(open(this->tree_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  int last = -1;
  makeDeepFolders(root.get(), std::string(200, 'x'), 25, [&](int folder) {
    close(last);
    last = dup(folder);
  });
  EXPECT_THAT(this->told(), ElementsAre("tree " + std::string(200, 'x')));
  makeFileIn(last, "file");
  close(last);
  // Whoever can't tell the path tells a folder above it.
  const FileChanges changes = this->watched_.collectAndTake();
  ASSERT_THAT(this->words(changes), SizeIs(1));
  if (changes.entries.empty()) {
    EXPECT_GT(changes.trees[0].size(), 3500U);
  } else {
    EXPECT_EQ(changes.entries[0].size(), this->prefix() + 25 * 201 + 4);
  }
}

TYPED_TEST(FileSystemWatchTest, WatchesOtherRootsWhenItIsStartedAnew) {
  this->outside_.folder("root");
  ASSERT_TRUE(this->watched_.watch().start({{this->outside_ / "root"}, {}}, this->watched_.now()));
  this->tree_.file("new");
  this->outside_.file("root/new");
  EXPECT_THAT(this->watched_.collectAndTake().entries, ElementsAre(this->outside_ / "root/new"));
}

TYPED_TEST(FileSystemWatchTest, KnowsUpToWhenItHasSeenAll) {
  EXPECT_EQ(this->watched_.watch().seenUntil(), this->watched_.now());
  this->watched_.pass(std::chrono::seconds(5));
  this->watched_.collect();
  EXPECT_EQ(this->watched_.watch().seenUntil(), this->watched_.now());
}

}  // namespace
}  // namespace vt
