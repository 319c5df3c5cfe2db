// A search with nothing in memory but the table of kinds: real files, the index that walks them,
// accounts from files, and the identity of the process, switched for real in a child that is root.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "directory/VTUser.h"
#include "foundation/NSLog.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/Platform.h"
#include "platform/linux/AccountRecords.h"
#include "platform/linux/LinuxDirectoryServices.h"
#include "platform/linux/LinuxIdentity.h"
#include "platform/linux/LinuxProcess.h"
#include "platform/linux/LiveMetadataIndex.h"
#include "platform/linux/PosixFiles.h"
#include "platform/memory/MemoryResources.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/SearchWorld.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"
#include "support/InChildProcess.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

constexpr uid_t kAnn = 61501;
constexpr gid_t kStaff = 61020;    // Ann's primary group
constexpr gid_t kEditors = 61030;  // lists her
constexpr gid_t kOthers = 61040;   // does not

/// Files with owners and rights, and the world of accounts that they belong to.
class FileServer {
 public:
  FileServer() {
    std::filesystem::create_directories(root_.path() / "etc");
    std::filesystem::create_directories(root_.path() / "Library/Application Support");
    std::ofstream(root_ / "etc/passwd") << "root:x:0:0:root:/root:/bin/sh\n"
                                           "ann:x:61501:61020:Ann Lee:/home/ann:/bin/sh\n";
    std::ofstream(root_ / "etc/group") << "root:x:0:\nstaff:x:61020:\neditors:x:61030:ann\n"
                                          "others:x:61040:bob\n";
  }

  void addFile(const std::string& name, std::time_t modified, uid_t owner, gid_t group,
               mode_t mode) {
    const std::string path = files_ / name;
    std::ofstream(path) << "x";
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    ok_ = ok_ && utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 &&
          chown(path.c_str(), owner, group) == 0 && chmod(path.c_str(), mode) == 0;
  }
  void addFolder(const std::string& name, mode_t mode) {
    std::filesystem::create_directory(files_ / name);
    ok_ = ok_ && chmod((files_ / name).c_str(), mode) == 0;
  }
  bool isComplete() const { return ok_; }

  /// The groups that the user called `name` finds, a line each, and the ids of the process
  /// afterwards. To be called in a child process.
  std::string search(const std::string& query, const std::string& name) const {
    const LogRedirection silence([](std::string_view) {});
    const PlatformScope scope(platform());
    const std::shared_ptr<VTUser> user = VTUser::userWithName(name);
    if (!user) return "no such user";
    const auto folders = ObjectArray<VTSearchFolder>::make(
        {VTConcreteSearchFolder::initWithPath(files_.path().string(), "Files")});
    const auto found = VTSearchManager::initWithUser(user)->executeQuery(query, folders);
    std::string report = found ? "" : "rejected\n";
    for (std::uint64_t i = 0; found && i < found->count(); ++i) {
      const VTSearchResult& group = *found->resultAtIndex(i);
      report += *group.title() + ":";
      for (std::uint64_t j = 0; j < group.count(); ++j) {
        report += " " + group.pathForItemAtIndex(j)->substr(files_.path().string().size() + 1);
      }
      report += "\n";
    }
    return report + "uid " + std::to_string(geteuid()) + " gid " + std::to_string(getegid());
  }

 private:
  std::shared_ptr<Platform> platform() const {
    const std::string root = root_.path();
    const std::shared_ptr<const Accounts> accounts = accountsUnder(root);
    const auto identity = std::make_shared<LinuxIdentity>(accounts);
    const auto credentialsOf = [accounts](std::uint32_t uid) -> std::optional<Credentials> {
      const std::optional<Account> account = accounts->accountWithId(uid);
      if (!account) return std::nullopt;
      return Credentials(uid, account->gid, accounts->groupsOf(*account));
    };
    const auto resources = std::make_shared<MemoryResources>();
    resources->add("ContentTypeGroups", "plist", std::string(SearchWorld::kKinds));
    return std::make_shared<Platform>(Platform::Services{
        .files = std::make_shared<PosixFiles>(),
        .identity = identity,
        .directoryServices = std::make_shared<LinuxDirectoryServices>(
            std::make_shared<AccountRecords>(accounts, passwordsUnder(root))),
        .runtimeBundles = nullptr,
        .metadataIndex = std::make_shared<LiveMetadataIndex>(
            std::make_shared<ContentTypes>(shippedTypes()),
            std::make_shared<query::AttributeSchema>(shippedSchema()), identity, credentialsOf),
        .resources = resources,
        .host = nullptr,
        .process = std::make_shared<LinuxProcess>(),
        .tasks = nullptr,
        .rootPrefix = root,
    });
  }

  TemporaryFolder root_;
  TemporaryFolder files_;
  bool ok_ = true;
};

class EndToEnd : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
    server_.addFile("everybody.txt", 100, 0, 0, 0644);
    server_.addFile("her own.txt", 300, kAnn, kStaff, 0600);
    server_.addFile("her group's.txt", 200, 0, kStaff, 0640);
    server_.addFile("editors'.txt", 400, 0, kEditors, 0640);
    server_.addFile("others'.txt", 500, 0, kOthers, 0640);
    server_.addFile("root's group's.txt", 600, 0, 0, 0640);
    server_.addFile("root's own.txt", 700, 0, 0, 0600);
    server_.addFile("denied to her.txt", 750, kAnn, kStaff, 0044);
    server_.addFile("everybody.png", 50, 0, 0, 0644);
    server_.addFolder("closed", 0700);
    server_.addFile("closed/inside.txt", 800, 0, 0, 0644);
    ASSERT_TRUE(server_.isComplete());
  }

  std::string search(const std::string& query, const std::string& name) const {
    return inChildProcess([&] { return server_.search(query, name); });
  }

  FileServer server_;
};

TEST_F(EndToEnd, FindsExactlyWhatTheUserMayReadNewestFirst) {
  EXPECT_EQ(search("kMDItemFSSize == 1", "ann"),
            "Images: everybody.png\n"
            "Documents: editors'.txt her own.txt her group's.txt everybody.txt\n"
            "uid 0 gid 0");
}

TEST_F(EndToEnd, FindsEverythingForRoot) {
  EXPECT_EQ(search("kMDItemDisplayName == \"*.txt\"", "root"),
            "Documents: closed/inside.txt denied to her.txt root's own.txt root's group's.txt "
            "others'.txt editors'.txt her own.txt her group's.txt everybody.txt\n"
            "uid 0 gid 0");
}

TEST_F(EndToEnd, LooksIntoTheFilesWithTheRightsOfTheUser) {
  EXPECT_EQ(search("kMDItemTextContent == \"x\"", "ann"),
            "Documents: editors'.txt her own.txt her group's.txt everybody.txt\n"
            "uid 0 gid 0");
}

TEST_F(EndToEnd, IsItselfAgainAfterARejectedQuery) {
  EXPECT_EQ(search("kMDItemFSSize ==", "ann"), "rejected\nuid 0 gid 0");
}

TEST_F(EndToEnd, LeavesAnotherEffectiveGroupAsItWasWhereTheKernelRefusesTheSwitch) {
  const std::string report = inChildProcess([&] {
    if (setegid(kOthers) != 0) return std::string("cannot change the group");
    return server_.search("kMDItemDisplayName == \"everybody.png\"", "ann");
  });
  EXPECT_EQ(report, "Images: everybody.png\nuid 0 gid 61040");
}

}  // namespace
}  // namespace vt
