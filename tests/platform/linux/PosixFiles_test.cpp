#include "platform/linux/PosixFiles.h"

#include <errno.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/AccountFolder.h"
#include "platform/linux/AccountRecords.h"
#include "platform/memory/FaultyFiles.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t kPlenty = 1 << 20;

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

TEST(PosixFiles, WritesAndReadsAFile) {
  const TemporaryFolder folder;
  PosixFiles files;
  const std::string bytes("a\0b\xff", 4);
  EXPECT_EQ(files.writeAtomically(folder / "file", bytes), std::nullopt);
  const auto read = files.read(folder / "file", kPlenty);
  ASSERT_TRUE(read);
  EXPECT_EQ(*read, bytes);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
}

TEST(PosixFiles, GivesAWrittenFileToItsOwnerAlone) {
  const TemporaryFolder folder;
  PosixFiles files;
  writeFile(folder / "file", "old");
  ::chmod((folder / "file").c_str(), 0644);
  ASSERT_EQ(files.writeAtomically(folder / "file", "new"), std::nullopt);
  EXPECT_EQ(files.status(folder / "file")->permissions, 0600U);
}

TEST(PosixFiles, ReplacesTheFileAndNotItsContents) {
  const TemporaryFolder folder;
  PosixFiles files;
  writeFile(folder / "file", "old");
  ASSERT_EQ(::link((folder / "file").c_str(), (folder / "other name").c_str()), 0);
  ASSERT_EQ(files.writeAtomically(folder / "file", "new"), std::nullopt);
  EXPECT_EQ(readFile(folder / "other name"), "old");
}

TEST(PosixFiles, LeavesTheOldFileWhicheverStepFails) {
  const TemporaryFolder folder;
  FaultyFiles files;
  writeFile(folder / "file", "old");
  for (const int error : {ENOSPC, EIO, EDQUOT}) {
    // Make the temporary file, write, sync, rename; then the folder's sync.
    for (int step = 0; step < 4; ++step) {
      SCOPED_TRACE(testing::Message() << "step " << step << ", errno " << error);
      files.failAfter(step, error);
      const std::optional<FileError> failure = files.writeAtomically(folder / "file", "new bytes");
      ASSERT_TRUE(files.didFail());
      ASSERT_TRUE(failure);
      EXPECT_EQ(failure->number, error);
      EXPECT_THAT(failure->text, HasSubstr(folder / "file"));
      EXPECT_EQ(readFile(folder / "file"), "old");
      EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
    }
  }
}

TEST(PosixFiles, ReportsAFolderThatCannotBeSynced) {
  const TemporaryFolder folder;
  FaultyFiles files;
  files.failAfter(4, EIO);
  const std::optional<FileError> failure = files.writeAtomically(folder / "file", "new");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, EIO);
  EXPECT_EQ(readFile(folder / "file"), "new");
}

TEST(PosixFiles, TriesAgainWhenASignalInterruptsAWrite) {
  const TemporaryFolder folder;
  FaultyFiles files;
  files.failAfter(1, EINTR);
  EXPECT_EQ(files.writeAtomically(folder / "file", "new"), std::nullopt);
  EXPECT_TRUE(files.didFail());
  EXPECT_EQ(readFile(folder / "file"), "new");
}

TEST(PosixFiles, LeavesTheOldFileOnAFullDisk) {
  const TemporaryFolder folder;
  if (::mount("tmpfs", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0) {
    GTEST_SKIP() << "only root can mount a small file system";
  }
  PosixFiles files;
  const std::string old(20'000, 'o');
  EXPECT_EQ(files.writeAtomically(folder / "file", old), std::nullopt);
  const std::optional<FileError> failure =
      files.writeAtomically(folder / "file", std::string(100'000, 'n'));
  EXPECT_EQ(readFile(folder / "file"), old);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
  ::umount(folder.path().c_str());
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->number, ENOSPC);
}

TEST(PosixFiles, RemovesOnlyOldLeftoversOfTheSameFile) {
  const TemporaryFolder folder;
  const char* names[] = {".file.tmp-AAAAAA", ".file.tmp-BBBBBB", ".other.tmp-AAAAAA"};
  for (const char* name : names) writeFile(folder / name, "half");
  for (const char* name : {names[0], names[2]}) {
    const timespec old[2] = {{::time(nullptr) - 7200, 0}, {::time(nullptr) - 7200, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (folder / name).c_str(), old, 0), 0);
  }
  ASSERT_EQ(PosixFiles().writeAtomically(folder / "file", "new"), std::nullopt);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre(names[1], names[2], "file"));
}

TEST(PosixFiles, RefusesToReadWhatIsNoFileOrTooLong) {
  const TemporaryFolder folder;
  const PosixFiles files;
  writeFile(folder / "file", "12345");
  ASSERT_EQ(::mkfifo((folder / "fifo").c_str(), 0600), 0);
  EXPECT_EQ(files.read(folder / "missing", kPlenty).error().number, ENOENT);
  EXPECT_EQ(files.read(folder.path(), kPlenty).error().number, EISDIR);
  EXPECT_EQ(files.read(folder / "fifo", kPlenty).error().number, EINVAL);
  EXPECT_EQ(files.read(folder / "file", 4).error().number, EFBIG);
  EXPECT_EQ(*files.read(folder / "file", 5), "12345");
  EXPECT_EQ(files.read("/dev/zero", kPlenty).error().number, EINVAL);
}

TEST(PosixFiles, ReadsContentOfRegularFilesAlone) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "1234");
  std::filesystem::create_symlink(folder / "file", folder / "link");
  std::filesystem::create_directory(folder / "real");
  std::filesystem::create_symlink(folder / "real", folder / "linked");
  writeFile(folder / "real/below", "56");
  writeFile(folder / "sparse", "");
  std::filesystem::resize_file(folder / "sparse", 100 << 20);
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0644), 0);
  struct Case {
    const char* what;
    std::string path;
    int error;
  };
  const Case cases[] = {
      {"file of just the limit", folder / "file", 0},
      {"file below a link", folder / "linked/below", 0},
      {"link", folder / "link", ELOOP},
      {"folder", folder / "real", EISDIR},
      {"pipe that nobody writes to", folder / "pipe", EINVAL},
      {"too long", folder / "sparse", EFBIG},
      {"device", "/dev/zero", EINVAL},
      {"missing", folder / "missing", ENOENT},
      {"no path", "", ENOENT},
      {"name with a NUL", folder / std::string("file\0.webloc", 12), EINVAL},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto content = PosixFiles().readContent(c.path, 4);
    EXPECT_EQ(content ? 0 : content.error().number, c.error);
    const auto opened = PosixFiles().openContent(c.path);
    EXPECT_EQ(opened ? 0 : opened.error().number, c.error == EFBIG ? 0 : c.error);
    if (opened) close(*opened);
  }
  EXPECT_EQ(*PosixFiles().readContent(folder / "file", 4), "1234");
}

TEST(PosixFiles, LeavesTheAccessTimeOfContentAlone) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "1234");
  const timespec longAgo[2] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, (folder / "file").c_str(), longAgo, 0), 0);
  ASSERT_TRUE(PosixFiles().readContent(folder / "file", kPlenty));
  struct stat status{};
  ASSERT_EQ(stat((folder / "file").c_str(), &status), 0);
  EXPECT_EQ(status.st_atime, 1000);
}

TEST(PosixFiles, KeepsWhatAReplacedFileHeld) {
  const TemporaryFolder folder;
  PosixFiles files;
  writeFile(folder / "file", "first");
  EXPECT_EQ(files.keepAs(folder / "file", folder / "kept"), std::nullopt);
  ASSERT_EQ(files.writeAtomically(folder / "file", "second"), std::nullopt);
  EXPECT_EQ(readFile(folder / "kept"), "first");
  EXPECT_EQ(files.keepAs(folder / "file", folder / "kept"), std::nullopt);
  EXPECT_EQ(readFile(folder / "kept"), "first");
}

TEST(PosixFiles, CopiesTheFileToKeepWhereThereAreNoHardLinks) {
  const TemporaryFolder folder;
  FaultyFiles files;
  writeFile(folder / "file", "first");
  files.failAfter(0, EPERM);
  EXPECT_EQ(files.keepAs(folder / "file", folder / "kept"), std::nullopt);
  EXPECT_EQ(readFile(folder / "kept"), "first");
}

TEST(PosixFiles, ReportsWhatCannotBeKept) {
  const TemporaryFolder folder;
  FaultyFiles files;
  writeFile(folder / "file", "first");
  files.failAfter(0, ENOSPC);
  EXPECT_EQ(files.keepAs(folder / "file", folder / "kept")->number, ENOSPC);
  EXPECT_EQ(files.keepAs(folder / "missing", folder / "kept")->number, ENOENT);
}

TEST(PosixFiles, CreatesOneDirectoryWhoseParentExists) {
  const TemporaryFolder folder;
  PosixFiles files;
  EXPECT_TRUE(files.createDirectory(folder / "new/"));
  EXPECT_TRUE(files.exists(folder / "new/"));
  EXPECT_FALSE(files.createDirectory(folder / "new/"));
  EXPECT_FALSE(files.createDirectory(folder / "a/b"));
}

TEST(PosixFiles, GivesADirectoryToTheAdministratorsGroup) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
  const group* wanted = nullptr;
  for (const char* name : {"admin", "sudo", "wheel"}) {
    if (!wanted) wanted = ::getgrnam(name);
  }
  if (!wanted) GTEST_SKIP() << "this machine has none of the three groups";
  const gid_t expected = wanted->gr_gid;
  const TemporaryFolder folder;
  EXPECT_TRUE(PosixFiles().changeAttributes(folder.path(), "admin", 0775));
  const std::optional<FileRights> status = PosixFiles().status(folder.path());
  EXPECT_EQ(status->groupId, expected);
  EXPECT_EQ(status->permissions, 0775U);
}

TEST(PosixFiles, FindsTheAdministratorsGroupAmongTheAccountsItWasGiven) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
  struct Case {
    const char* what;
    const char* groups;
    std::optional<std::uint64_t> groupId;
  };
  const Case cases[] = {
      {"the group of that name", "wheel:x:4003:\nsudo:x:4002:\nadmin:x:4001:\n", 4001},
      {"sudo in its place", "wheel:x:4003:\nsudo:x:4002:\n", 4002},
      {"wheel in its place", "wheel:x:4003:\n", 4003},
      {"none, whatever this machine has", "staff:x:4004:\n", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const AccountFolder root;
    root.write("passwd", "");
    root.write("group", c.groups);
    const TemporaryFolder folder;
    PosixFiles files(accountsUnder(root.root()));
    EXPECT_EQ(files.changeAttributes(folder.path(), "admin", 0775), c.groupId.has_value());
    const std::optional<FileRights> status = files.status(folder.path());
    EXPECT_EQ(status->groupId, c.groupId.value_or(0));
    EXPECT_EQ(status->permissions, c.groupId ? 0775U : 0755U);
  }
}

TEST(PosixFiles, DoesNotChangeAttributesForAGroupOrPathThatIsMissing) {
  const TemporaryFolder folder;
  EXPECT_FALSE(PosixFiles().changeAttributes(folder.path(), "no such group", 0700));
  EXPECT_FALSE(PosixFiles().changeAttributes(folder / "missing", "admin", 0775));
  EXPECT_EQ(PosixFiles().status(folder.path())->permissions, 0755U);
}

TEST(PosixFiles, KnowsNoStatusOfAMissingFile) {
  const TemporaryFolder folder;
  EXPECT_EQ(PosixFiles().status(folder / "missing"), std::nullopt);
  EXPECT_FALSE(PosixFiles().exists(folder / "missing"));
}

TEST(PosixFiles, TellsWhenAFileWasModifiedAndFollowsLinks) {
  const TemporaryFolder folder;
  const PosixFiles files;
  writeFile(folder / "file", "");
  const timespec times[2] = {{1000000000, 0}, {1234567890, 123456789}};
  ASSERT_EQ(::utimensat(AT_FDCWD, (folder / "file").c_str(), times, 0), 0);
  std::filesystem::create_symlink("file", folder / "link");
  std::filesystem::create_symlink("nowhere", folder / "dangling");
  const Date modified{std::chrono::microseconds{1234567890123456}};
  EXPECT_EQ(files.modificationDate(folder / "file"), modified);
  EXPECT_EQ(files.modificationDate(folder / "link"), modified);
  EXPECT_EQ(files.modificationDate(folder / "dangling"), std::nullopt);
  EXPECT_EQ(files.modificationDate(folder / "missing"), std::nullopt);
}

TEST(PosixFiles, RemovesAFileOrALinkButNoFolder) {
  const TemporaryFolder folder;
  PosixFiles files;
  writeFile(folder / "file", "");
  std::filesystem::create_symlink("file", folder / "link");
  std::filesystem::create_directory(folder / "folder");
  EXPECT_TRUE(files.removeFile(folder / "link"));
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file", "folder"));
  EXPECT_TRUE(files.removeFile(folder / "file"));
  EXPECT_FALSE(files.removeFile(folder / "file"));
  EXPECT_FALSE(files.removeFile(folder / "folder"));
}

TEST(PosixFiles, MovesAFileOverAnother) {
  const TemporaryFolder folder;
  PosixFiles files;
  writeFile(folder / "from", "new");
  writeFile(folder / "to", "old");
  EXPECT_TRUE(files.moveFile(folder / "from", folder / "to"));
  EXPECT_EQ(readFile(folder / "to"), "new");
  EXPECT_FALSE(files.moveFile(folder / "from", folder / "to"));
  EXPECT_EQ(readFile(folder / "to"), "new");
}

TEST(PosixFiles, MakesAPrivateFolderWhateverTheMask) {
  const TemporaryFolder folder;
  PosixFiles files;
  const mode_t mask = ::umask(0277);
  EXPECT_TRUE(files.createPrivateDirectory(folder / "private"));
  ::umask(mask);
  EXPECT_EQ(files.status(folder / "private")->permissions, 0700U);
  EXPECT_FALSE(files.createPrivateDirectory(folder / "private"));
}

}  // namespace
}  // namespace vt
