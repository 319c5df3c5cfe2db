#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "DirectoryWorld.h"
#include "directory/VTUser.h"
#include "platform/linux/PosixFiles.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kUser = 61501;
constexpr std::uint32_t kPrimaryGroup = 61020;
constexpr std::uint32_t kFurtherGroup = 61080;
constexpr std::uint32_t kStranger = 61999;

/// Real files, with a list of the paths whose status was asked for.
class WatchedFiles final : public PosixFiles {
 public:
  std::optional<FileRights> status(const std::string& path) const override {
    asked.push_back(path);
    if (path.find("broken") != path.npos) throw std::runtime_error("bad sector");
    return PosixFiles::status(path);
  }

  mutable std::vector<std::string> asked;
};

class FileAccessRule : public testing::Test {
 protected:
  FileAccessRule() {
    add("amy", kUser, {kFurtherGroup, kFurtherGroup + 1});
    add("loner", kUser, {});
    add("stranger", kStranger, {});
    add("root", 0, {});
  }

  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  }

  Platform::Services services() const {
    Platform::Services services;
    services.files = watched_;
    return services;
  }

  std::shared_ptr<VTUser> user(const std::string& name) { return VTUser::userWithName(name); }

  /// A file of this owner, group and mode.
  std::string file(std::uint32_t owner, std::uint32_t group, mode_t mode) {
    const std::string path = folder_ / std::to_string(++files_);
    std::ofstream(path) << "x";
    EXPECT_EQ(chown(path.c_str(), owner, group), 0);
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
  }

  bool allows(const std::string& name, const std::string& path) {
    return user(name)->accessAllowedToPath(path);
  }

  std::shared_ptr<WatchedFiles> watched_ = std::make_shared<WatchedFiles>();
  DirectoryWorld world_{services()};
  TemporaryFolder folder_;

 private:
  void add(const std::string& name, std::uint32_t uid, std::vector<std::int32_t> groups) {
    world_.records->add(userRecord(name, std::to_string(uid), std::to_string(kPrimaryGroup), name));
    world_.identity->setGroups(name, std::move(groups));
  }

  int files_ = 0;
};

TEST_F(FileAccessRule, LooksAtGroupAndOthersBitsOfEveryMode) {
  const auto amy = user("amy");
  const auto loner = user("loner");
  const auto stranger = user("stranger");
  const std::string own = file(kUser, kStranger, 0);
  const std::string further = file(kStranger - 1, kFurtherGroup + 1, 0);
  const std::string primary = file(kStranger - 1, kPrimaryGroup, 0);
  for (mode_t mode = 0; mode <= 07777; mode += (mode < 0777 ? 1 : 0777)) {
    SCOPED_TRACE(testing::Message() << std::oct << mode);
    for (const std::string& path : {own, further, primary}) {
      ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }
    const bool others = (mode & (S_IROTH | S_IXOTH)) != 0;
    const bool group = (mode & (S_IRGRP | S_IXGRP)) != 0;
    EXPECT_TRUE(amy->accessAllowedToFileIntern(own));
    EXPECT_EQ(amy->accessAllowedToFileIntern(further), others || group);
    EXPECT_EQ(amy->accessAllowedToFileIntern(primary), others);
    EXPECT_EQ(loner->accessAllowedToFileIntern(further), others);
    EXPECT_EQ(stranger->accessAllowedToFileIntern(own), others);
  }
}

TEST_F(FileAccessRule, OpensAGroupsFileToItsMembersButNotToThoseWhosePrimaryGroupItIs) {
  const std::string path = file(kStranger, kFurtherGroup, 0640);
  EXPECT_TRUE(allows("amy", path));
  EXPECT_FALSE(allows("loner", path));
  EXPECT_FALSE(allows("loner", file(kStranger, kPrimaryGroup, 0640)));
}

TEST_F(FileAccessRule, LooksAtTheGroupsUpToTheFirstNegativeOne) {
  world_.identity->setGroups("loner", {kFurtherGroup, -7, kFurtherGroup + 1});
  EXPECT_TRUE(allows("loner", file(kStranger, kFurtherGroup, 0640)));
  EXPECT_FALSE(allows("loner", file(kStranger, kFurtherGroup + 1, 0640)));
}

TEST_F(FileAccessRule, DecidesUnlikeTheKernelWhereItIsPrescribed) {
  EXPECT_TRUE(allows("amy", file(kUser, 0, 0000))) << "an owner may not open this";
  EXPECT_TRUE(allows("amy", file(0, 0, 0001))) << "a file that may only be executed";
  EXPECT_TRUE(allows("amy", file(0, kFurtherGroup, 0604))) << "a group kept out";
  EXPECT_FALSE(allows("amy", file(0, kPrimaryGroup, 0640))) << "the kernel opens this";
}

TEST_F(FileAccessRule, AsksTheFileAndThenEachFolderAboveItButNotTheRoot) {
  const std::string inner = folder_ / "a/b";
  std::filesystem::create_directories(inner);
  std::ofstream(inner + "/c") << "x";
  watched_->asked.clear();
  EXPECT_TRUE(allows("amy", inner + "/c"));
  const std::string root = folder_.path();
  EXPECT_THAT(watched_->asked, ElementsAre(inner + "/c", inner, root + "/a", root, "/tmp"));
}

TEST_F(FileAccessRule, StopsAtTheFirstFolderThatIsClosed) {
  const std::string closed = folder_ / "closed";
  std::filesystem::create_directory(closed);
  ASSERT_EQ(chmod(closed.c_str(), 0700), 0);
  std::ofstream(closed + "/open") << "x";
  ASSERT_EQ(chmod((closed + "/open").c_str(), 0604), 0);
  watched_->asked.clear();
  EXPECT_FALSE(allows("amy", closed + "/open"));
  EXPECT_THAT(watched_->asked, ElementsAre(closed + "/open", closed));
  EXPECT_TRUE(user("amy")->accessAllowedToFileIntern(closed + "/open"));
  ASSERT_EQ(chmod(closed.c_str(), 0711), 0);
  EXPECT_TRUE(allows("amy", closed + "/open")) << "search permission counts as read permission";
}

TEST_F(FileAccessRule, FollowsLinks) {
  const std::string closed = file(0, 0, 0600);
  const std::string open = file(0, 0, 0644);
  std::filesystem::create_symlink(closed, folder_ / "to-closed");
  std::filesystem::create_symlink(open, folder_ / "to-open");
  std::filesystem::create_symlink(folder_ / "nowhere", folder_ / "to-nowhere");
  std::filesystem::create_symlink("loop", folder_ / "loop");
  EXPECT_FALSE(allows("amy", folder_ / "to-closed"));
  EXPECT_TRUE(allows("amy", folder_ / "to-open"));
  EXPECT_FALSE(allows("amy", folder_ / "to-nowhere"));
  EXPECT_FALSE(allows("amy", folder_ / "loop"));
}

TEST_F(FileAccessRule, RefusesWhatIsNotThere) {
  EXPECT_FALSE(allows("amy", folder_ / "missing"));
  EXPECT_FALSE(allows("amy", file(0, 0, 0644) + "/below-a-file"));
}

TEST_F(FileAccessRule, AllowsRootAllWithoutLooking) {
  watched_->asked.clear();
  EXPECT_TRUE(allows("root", "/private/var/x"));
  EXPECT_TRUE(allows("root", "relative/x"));
  EXPECT_TRUE(allows("root", "x/")) << "two characters, of which one remains";
  EXPECT_THAT(watched_->asked, IsEmpty());
}

TEST_F(FileAccessRule, RefusesPathsOfOneCharacterEvenToRoot) {
  for (const char* path : {"", "/", "x", "\xC3\xA4", "\xE2\x82\xAC", "\xE4"}) {
    SCOPED_TRACE(path);
    watched_->asked.clear();
    EXPECT_FALSE(allows("root", path));
    EXPECT_FALSE(allows("amy", path));
    EXPECT_THAT(watched_->asked, IsEmpty());
  }
  EXPECT_TRUE(allows("root", "\xF0\x9F\x98\x80")) << "two units of text";
}

TEST_F(FileAccessRule, TakesTheLastComponentOffAsPathTextsDo) {
  const std::string path = file(0, 0, 0644);
  const std::string root = folder_.path();
  watched_->asked.clear();
  EXPECT_FALSE(allows("amy", path + "/")) << "a file with a slash is none";
  EXPECT_TRUE(allows("amy", root + "//"));
  EXPECT_THAT(watched_->asked, ElementsAre(path + "/", root + "//", "/tmp"));
  watched_->asked.clear();
  EXPECT_TRUE(allows("amy", "/tmp//" + root.substr(5)));
  EXPECT_THAT(watched_->asked, ElementsAre("/tmp//" + root.substr(5), "/tmp"));
}

TEST_F(FileAccessRule, LogsAnExceptionAndRefuses) {
  world_.log.clear();
  EXPECT_FALSE(allows("amy", "/tmp/broken"));
  EXPECT_THAT(world_.log, ElementsAre("User.accessAllowedToFileIntern: Caught for path "
                                      "/tmp/broken - std::runtime_error: bad sector"));
}

}  // namespace
}  // namespace vt
