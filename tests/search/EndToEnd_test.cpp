// A search with nothing in memory but the table of kinds: real files, the index that walks them,
// accounts from files, and the identity of the process, switched for real in a child that is root.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "directory/VTUser.h"
#include "foundation/NSLog.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/types/ShippedTypes.h"
#include "platform/Platform.h"
#include "platform/linux/AccountRecords.h"
#include "platform/linux/LinuxContentTypeTags.h"
#include "platform/linux/LinuxDirectoryServices.h"
#include "platform/linux/LinuxIdentity.h"
#include "platform/linux/LinuxProcess.h"
#include "platform/linux/LiveMetadataIndex.h"
#include "platform/linux/PosixFiles.h"
#include "platform/memory/MemoryBundles.h"
#include "platform/memory/MemoryResources.h"
#include "scopes/VTConcreteSearchFolder.h"
#include "search/ItemContent.h"
#include "search/SearchWorld.h"
#include "search/TypedSearch.h"
#include "search/VTSearchManager.h"
#include "search/VTSearchResult.h"
#include "search/VTSearchResultContainer.h"
#include "settings/VTSettings.h"
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

  void addFile(const std::string& name, std::time_t modified, uid_t owner, gid_t group, mode_t mode,
               std::string_view text = "x") {
    const std::string path = files_ / name;
    std::ofstream(path) << text;
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
    return report + ids();
  }

  /// What everybody finds, in a platform that has gone since.
  std::shared_ptr<VTSearchResultContainer> found(const std::string& query,
                                                 std::chrono::milliseconds longestWalk) const {
    const LogRedirection silence([](std::string_view) {});
    const PlatformScope scope(platform());
    const auto folders = ObjectArray<VTSearchFolder>::make(
        {VTConcreteSearchFolder::initWithPath(files_.path().string(), "Files")});
    const auto manager = VTSearchManager::initWithUser(nullptr);
    manager->setLongestWalk(longestWalk);
    auto container = manager->executeQuery(query, folders);
    if (!container && !manager->lastNotes().walkWasGivenUp) throw std::runtime_error("rejected");
    return container;
  }

  /// What the user called `user` gets of the file `name` through a group that holds it: the address
  /// in it and its MIME type; then the ids of the process. To be called in a child process.
  std::string lookInto(const std::string& name, const std::string& user) const {
    const PlatformScope scope(platform());
    const auto records =
        VTSearchResult::Records::make({Dictionary::make({{"kMDItemPath", files_ / name}})});
    const auto group = VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {},
                                                         VTUser::userWithName(user));
    const std::string link = group->webLinkForItemAtIndex(0).value_or("no link");
    return link + ", " + group->mimeTypeForItemAtIndex(0).value_or("no type") + ", " + ids();
  }

  /// How many bytes the metadata of the file `name` say, as the user called `user` gets them; then
  /// the ids of the process. To be called in a child process.
  std::string sizeOf(const std::string& name, const std::string& user) const {
    const LogRedirection silence([](std::string_view) {});
    const PlatformScope scope(platform());
    VTSettings::sharedInstance()->loadAttributeNames();
    const auto records =
        VTSearchResult::Records::make({Dictionary::make({{"kMDItemPath", files_ / name}})});
    const auto metadata =
        VTSearchResult::initWithGroupKind(nullptr, records, nullptr, {}, VTUser::userWithName(user))
            ->metadataForItemAtIndex(0);
    const Value* size = metadata->find("Size");
    return (size ? std::to_string(size->integerValue()) : "no") + " bytes, " + ids();
  }

  /// What the file `name` holds, opened for the user called `user`; then the ids of the process. To
  /// be called in a child process.
  std::string contentOf(const std::string& name, const std::string& user) const {
    const PlatformScope scope(platform());
    const std::optional<int> file =
        openItemContent(VTUser::userWithName(user).get(), files_ / name);
    if (!file) return "nothing, " + ids();
    char bytes[100];
    const ssize_t count = read(*file, bytes, sizeof bytes);
    close(*file);
    return std::string(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0))) + ", " + ids();
  }

  /// The query for what somebody typed, or why there is none. To be called in a child process.
  std::string queryFor(const std::string& typed) const {
    const LogRedirection silence([](std::string_view) {});
    const PlatformScope scope(platform());
    VTSettings::sharedInstance()->loadAttributeNames();
    const auto query = queryForTypedSearch(typed, /*readsFiles=*/false);
    if (!query) return query.error().kind + " at " + std::to_string(query.error().offset);
    return query->query + (query->asksForText ? "" : ", names only");
  }

 private:
  static std::string ids() {
    return "uid " + std::to_string(geteuid()) + " gid " + std::to_string(getegid());
  }

  std::shared_ptr<Platform> platform() const {
    const std::string root = root_.path();
    const std::shared_ptr<const Accounts> accounts = accountsUnder(root);
    const auto identity = std::make_shared<LinuxIdentity>(accounts);
    const auto credentialsOf = [accounts](std::uint32_t uid) -> std::optional<Credentials> {
      const std::optional<Account> account = accounts->accountWithId(uid);
      if (!account) return std::nullopt;
      return Credentials(uid, account->gid, accounts->groupsOf(*account));
    };
    const auto types = std::make_shared<const ContentTypes>(shippedTypes());
    const auto resources = std::make_shared<MemoryResources>();
    resources->add("ContentTypeGroups", "plist", std::string(SearchWorld::kKinds));
    return std::make_shared<Platform>(Platform::Services{
        .files = std::make_shared<PosixFiles>(),
        .identity = identity,
        .directoryServices = std::make_shared<LinuxDirectoryServices>(
            std::make_shared<AccountRecords>(accounts, passwordsUnder(root))),
        .runtimeBundles = nullptr,
        .metadataIndex = std::make_shared<LiveMetadataIndex>(
            types, std::make_shared<query::AttributeSchema>(shippedSchema()), identity,
            credentialsOf),
        .resources = resources,
        .host = nullptr,
        .process = std::make_shared<LinuxProcess>(),
        .bundles = std::make_shared<MemoryBundles>(),
        .contentTypeTags = std::make_shared<LinuxContentTypeTags>(types),
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

TEST_F(EndToEnd, TellsOfItsHitsAsLongAsAGroupOfThemLives) {
  const auto container = server_.found("kMDItemFSName == \"every*.txt\"", std::chrono::hours(1));
  ASSERT_TRUE(container);
  const auto group = container->resultAtIndex(0);
  EXPECT_EQ(group->count(), 1U);
  EXPECT_EQ(group->valueForKey("kMDItemDisplayName", 0), Value("everybody.txt"));
  EXPECT_EQ(group->results()->size(), 1U);
}

TEST_F(EndToEnd, FindsNothingWhenTheWalkTakesLongerThanItMay) {
  EXPECT_FALSE(server_.found("true", std::chrono::milliseconds(-1)));
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

TEST_F(EndToEnd, OpensAWebLinkAsTheUserWhoAsks) {
  struct Case {
    const char* what;
    uid_t owner;
    gid_t group;
    mode_t mode;
    bool isOpened;
  };
  const Case cases[] = {
      {"everybody's", 0, 0, 0644, true},
      {"her own", kAnn, 0, 0400, true},
      {"her group's", 0, kStaff, 0640, true},
      {"editors'", 0, kEditors, 0640, true},
      {"others'", 0, kOthers, 0640, false},
      {"root's group's", 0, 0, 0640, false},
      {"root's own", 0, 0, 0600, false},
      {"denied to her", kAnn, kStaff, 0044, false},
      {"denied to hers", 0, kEditors, 0604, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string name = std::string(c.what) + ".webloc";
    server_.addFile(name, 100, c.owner, c.group, c.mode, "{ URL = \"http://a.b/\"; }");
    ASSERT_TRUE(server_.isComplete());
    const auto looking = [&](const std::string& user) {
      return inChildProcess([&] { return server_.lookInto(name, user); });
    };
    EXPECT_EQ(looking("ann"),
              c.isOpened ? "http://a.b/, no type, uid 0 gid 0" : "no link, no type, uid 0 gid 0");
    EXPECT_EQ(looking("root"), "http://a.b/, no type, uid 0 gid 0");
  }
}

TEST_F(EndToEnd, OpensNoWebLinkInAFolderThatIsClosedToTheUser) {
  server_.addFile("closed/page.webloc", 100, 0, 0, 0644, "{ URL = \"http://a.b/\"; }");
  EXPECT_EQ(inChildProcess([&] { return server_.lookInto("closed/page.webloc", "ann"); }),
            "no link, no type, uid 0 gid 0");
}

TEST_F(EndToEnd, TellsTheMimeTypeOfWhatTheUserMayReadAlone) {
  const auto looking = [&](const std::string& name) {
    return inChildProcess([&] { return server_.lookInto(name, "ann"); });
  };
  EXPECT_EQ(looking("editors'.txt"), "no link, text/plain, uid 0 gid 0");
  EXPECT_EQ(looking("others'.txt"), "no link, no type, uid 0 gid 0");
  EXPECT_EQ(looking("closed/inside.txt"), "no link, no type, uid 0 gid 0");
}

TEST_F(EndToEnd, TellsTheMetadataOfWhatTheUserMayReadAlone) {
  const auto looking = [&](const std::string& name, const std::string& user) {
    return inChildProcess([&] { return server_.sizeOf(name, user); });
  };
  EXPECT_EQ(looking("editors'.txt", "ann"), "1 bytes, uid 0 gid 0");
  EXPECT_EQ(looking("others'.txt", "ann"), "no bytes, uid 0 gid 0");
  EXPECT_EQ(looking("closed/inside.txt", "ann"), "no bytes, uid 0 gid 0");
  EXPECT_EQ(looking("closed/inside.txt", "root"), "1 bytes, uid 0 gid 0");
}

TEST_F(EndToEnd, OpensWhatTheUserMayReadAlone) {
  const auto opening = [&](const std::string& name, const std::string& user) {
    return inChildProcess([&] { return server_.contentOf(name, user); });
  };
  EXPECT_EQ(opening("editors'.txt", "ann"), "x, uid 0 gid 0");
  EXPECT_EQ(opening("her own.txt", "ann"), "x, uid 0 gid 0");
  EXPECT_EQ(opening("others'.txt", "ann"), "nothing, uid 0 gid 0");
  EXPECT_EQ(opening("denied to her.txt", "ann"), "nothing, uid 0 gid 0");
  EXPECT_EQ(opening("closed/inside.txt", "ann"), "nothing, uid 0 gid 0");
  EXPECT_EQ(opening("closed/inside.txt", "root"), "x, uid 0 gid 0");
  EXPECT_EQ(opening("closed", "root"), "nothing, uid 0 gid 0");
}

TEST_F(EndToEnd, KnowsShortNamesAndKindsInWhatIsTyped) {
  const auto query = [&](const std::string& typed) {
    return inChildProcess([&] { return server_.queryFor(typed); });
  };
  EXPECT_EQ(query("AUTHORS:ann"), "kMDItemAuthors == \"*ann*\"cd, names only");
  EXPECT_EQ(query("kind:image"),
            "kMDItemKind == \"*image*\"cd || kMDItemContentTypeTree == \"public.image\", "
            "names only");
  EXPECT_EQ(query("kind:im"), "kMDItemKind == \"*im*\"cd, names only");
  EXPECT_EQ(query("x size:y"), "number at 7");
  EXPECT_EQ(query("kMDItemFSSize == 1"), "kMDItemFSSize == 1");
}

TEST_F(EndToEnd, ReturnsToTheGroupThatASearchLeftTheProcessIn) {
  EXPECT_EQ(inChildProcess([&] {
              if (setegid(kOthers) != 0) return std::string("cannot change the group");
              return server_.lookInto("everybody.txt", "ann");
            }),
            "no link, text/plain, uid 0 gid 61040");
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
