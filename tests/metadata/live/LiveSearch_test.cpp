#include "metadata/live/LiveSearch.h"

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/acl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <chrono>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "metadata/live/LiveTree.h"
#include "metadata/live/ShippedSchema.h"
#include "metadata/query/QueryParser.h"
#include "metadata/types/ShippedTypes.h"
#include "support/InChildProcess.h"

namespace vt {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

const Credentials& superuser() {
  static const Credentials kSuperuser(0, 0, {});
  return kSuperuser;
}
const Credentials& stranger() {
  static const Credentials kStranger(54321, 54321, {});
  return kStranger;
}

class LiveSearchTest : public testing::Test {
 protected:
  LiveSearchResult search(const std::string& text, const std::vector<std::string>& scopes,
                          const Credentials& who) const {
    const auto parsed = query::parseQuery(text, schema_);
    if (!parsed) throw std::runtime_error("query rejected: " + text);
    const Date now = std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now());
    const query::QueryMatcher matcher(*parsed, schema_, {now, query::Calendar()});
    return LiveSearch(matcher, schema_, {types_, groups_}).run(scopes, who);
  }
  /// The paths found below the tree, less the tree's own, in the order of the hits.
  std::vector<std::string> found(const std::string& text,
                                 const Credentials& who = superuser()) const {
    return pathsOf(search(text, {tree_.path()}, who));
  }
  std::vector<std::string> pathsOf(const LiveSearchResult& result) const {
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < result.hits.size(); ++i) {
      paths.push_back(result.hits.pathOf(result.hits[i]).substr(tree_.path().size() + 1));
    }
    return paths;
  }
  void setModified(const std::string& below, std::time_t time) const {
    const timespec times[2] = {{time, 0}, {time, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, (tree_ / below).c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
  }

  ContentTypes types_ = shippedTypes();
  ResultGroups groups_{types_};
  query::AttributeSchema schema_ = shippedSchema();
  LiveTree tree_;
};

TEST_F(LiveSearchTest, FindsByWhatFilesAreAndNotTheScopeItself) {
  tree_.file("a/Report March.pdf", "12345");
  tree_.file("a/notes.txt", "the annual report");
  tree_.folder("Reports");
  tree_.link("report link", "nowhere");
  tree_.file(".hidden");
  const struct {
    const char* query;
    std::vector<std::string> paths;
  } cases[] = {
      {"kMDItemFSName == \"*report*\"cd", {"a/Report March.pdf", "Reports", "report link"}},
      {"kMDItemFSName == \"*report*\"", {"report link"}},
      {"kMDItemContentTypeTree == \"public.folder\"", {"a", "Reports"}},
      {"kMDItemContentType == \"com.adobe.pdf\"", {"a/Report March.pdf"}},
      {"kMDItemContentType == \"public.symlink\"", {"report link"}},
      {"_kMDItemGroupId == 11", {"a/Report March.pdf"}},
      {"kMDItemFSSize == 5 && kMDItemContentTypeTree != \"public.folder\"", {"a/Report March.pdf"}},
      {"kMDItemFSInvisible == 1", {".hidden"}},
      {"kMDItemFSNodeCount == 2", {"a"}},
      {"kMDItemFSNodeCount == 0", {"Reports"}},
      {"kMDItemTextContent == \"annual\"cdw", {"a/notes.txt"}},
      {"kMDItemTextContent == \"12345\"", {}},  // a PDF is no plain text
      {"kMDItemPath == \"*/a/notes.txt\"", {"a/notes.txt"}},
      {"kMDItemKind == \"Plain text\"", {"a/notes.txt"}},
      {"* == \"*march*\"cd", {"a/Report March.pdf"}},
      {"kMDItemFSContentChangeDate >= $time.today(-1) && kMDItemFSName == \"notes.txt\"",
       {"a/notes.txt"}},
      {"kMDItemAuthors == \"*\"", {}},
      {"kMDItemDueDate != \"*\" && kMDItemFSName == \"a\"", {"a"}},
      {"false", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.query);
    EXPECT_THAT(found(c.query), testing::UnorderedElementsAreArray(c.paths));
  }
  EXPECT_EQ(found("true").size(), 6U);
}

TEST_F(LiveSearchTest, GivesTheNewestFirstAndEqualOnesByPath) {
  for (const char* name : {"b/old", "new", "a/old", "a-old"}) tree_.file(name);
  for (const char* name : {"b/old", "a/old", "a-old"}) setModified(name, 1'000'000'000);
  setModified("new", 1'100'000'000);
  EXPECT_THAT(found("kMDItemContentTypeTree != \"public.folder\""),
              ElementsAre("new", "a-old", "a/old", "b/old"));
}

TEST_F(LiveSearchTest, FindsEachFileOnceHoweverScopesRepeatAndNest) {
  tree_.file("a/b/file");
  tree_.file("a/other");
  tree_.link("way", "a/b");
  const std::string a = tree_ / "a";
  const std::vector<std::string> scopes[] = {
      {a},           {a, a},        {a, a + "/"},
      {a, a + "/b"}, {a + "/b", a}, {a, a + "/b/", a + "/../a", a + "/missing"},
  };
  for (const auto& scope : scopes) {
    SCOPED_TRACE(testing::PrintToString(scope));
    EXPECT_THAT(pathsOf(search("true", scope, superuser())),
                UnorderedElementsAre("a/b", "a/b/file", "a/other"));
  }
  // By another way the folder keeps the name of that way.
  EXPECT_THAT(pathsOf(search("true", {tree_ / "way", a}, superuser())),
              UnorderedElementsAre("a/b", "way/file", "a/other"));
}

TEST_F(LiveSearchTest, NamesScopesThatCannotBeSearched) {
  tree_.file("file");
  tree_.folder("closed/in");
  ASSERT_EQ(chmod((tree_ / "closed").c_str(), 0700), 0);
  const std::vector<std::string> scopes = {"",
                                           "relative",
                                           tree_ / "missing",
                                           tree_ / "file",
                                           tree_ / "closed",
                                           tree_ / "closed/in",
                                           tree_.path()};
  LiveSearchResult result = search("kMDItemFSName == \"file\"", scopes, stranger());
  EXPECT_EQ(result.hits.size(), 1U);
  EXPECT_THAT(result.unusableScopes,
              ElementsAre("", "relative", scopes[2], scopes[3], scopes[4], scopes[5]));
}

TEST_F(LiveSearchTest, NamesAScopeThatTheProcessCannotList) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  tree_.file("unlisted/file");
  const std::string unlisted = tree_ / "unlisted";
  ASSERT_EQ(chmod(unlisted.c_str(), 0711), 0);
  EXPECT_EQ(search("true", {unlisted}, stranger()).hits.size(), 1U);
  EXPECT_EQ(inChildProcess([&]() -> std::string {
              if (setgroups(0, nullptr) != 0 || setgid(54321) != 0 || setuid(54321) != 0) {
                return "still root";
              }
              const LiveSearchResult result = search("true", {unlisted}, stranger());
              return testing::PrintToString(result.hits.size()) +
                     testing::PrintToString(result.unusableScopes);
            }),
            "0{ \"" + unlisted + "\" }");
}

TEST_F(LiveSearchTest, FindsTheFilesOfAVeryLargeFolder) {
  const Descriptor folder(open(tree_.folder("large").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  constexpr std::size_t kFiles = 20'000;
  for (std::size_t i = 0; i < kFiles; ++i) {
    ASSERT_EQ(mknodat(folder.get(), std::to_string(i).c_str(), S_IFREG | 0644, 0), 0);
  }
  EXPECT_EQ(found("kMDItemContentTypeTree != \"public.folder\"").size(), kFiles);
}

TEST_F(LiveSearchTest, TellsAfterEachFolderHowFarItHasCome) {
  tree_.file("a/one");
  tree_.file("a/b/two");
  tree_.file("c/three");
  const auto parsed = query::parseQuery("false", schema_);
  const query::QueryMatcher matcher(*parsed, schema_, {Date{}, query::Calendar()});
  std::vector<std::pair<std::uint64_t, std::uint64_t>> reports;
  const LiveSearch search(matcher, schema_, {types_, groups_},
                          [&](std::uint64_t folders, std::uint64_t entries) {
                            reports.emplace_back(folders, entries);
                          });
  search.run({tree_ / "a", tree_ / "c"}, superuser());
  EXPECT_THAT(reports, ElementsAre(std::pair(1U, 2U), std::pair(2U, 3U), std::pair(3U, 4U)));
}

TEST_F(LiveSearchTest, IsGivenUpWhenItTakesLongerThanItMay) {
  for (const char* name : {"a", "b/c"}) tree_.file(name);
  const auto parsed = query::parseQuery("true", schema_);
  const query::QueryMatcher matcher(*parsed, schema_, {Date(), query::Calendar()});
  const TypeTables tables{types_, groups_};
  // Over before it begins, as the clock need not move between two looks at it.
  const std::chrono::milliseconds over(-1);
  const auto result =
      LiveSearch(matcher, schema_, tables, {}, over).run({tree_.path()}, superuser());
  EXPECT_TRUE(result.wasGivenUp);
  const auto inTime = LiveSearch(matcher, schema_, tables, {}, std::chrono::hours(1))
                          .run({tree_.path()}, superuser());
  EXPECT_FALSE(inTime.wasGivenUp);
  EXPECT_EQ(inTime.hits.size(), 3U);
}

TEST_F(LiveSearchTest, FindsNothingWithoutAScope) {
  EXPECT_EQ(search("true", {}, superuser()).hits.size(), 0U);
}

TEST_F(LiveSearchTest, TellsNothingOfFilesThatTheAccountMayNotRead) {
  tree_.file("public.txt", "common word");
  ASSERT_EQ(chmod(tree_.file("secret.txt", "common secret").c_str(), 0600), 0);
  tree_.file("closed/below.txt", "common word");
  ASSERT_EQ(chmod((tree_ / "closed").c_str(), 0744), 0);
  tree_.folder("unlisted/in");
  ASSERT_EQ(chmod((tree_ / "unlisted").c_str(), 0711), 0);
  const struct {
    const char* query;
    std::vector<std::string> paths;
  } cases[] = {
      {"true", {"public.txt", "closed", "unlisted/in"}},
      {"kMDItemFSName == \"secret*\"", {}},
      {"kMDItemFSName != \"secret*\"", {"public.txt", "closed", "unlisted/in"}},
      {"kMDItemTextContent == \"common\"cdw", {"public.txt"}},
      {"kMDItemTextContent == \"secret\"cdw", {}},
      {"!(kMDItemTextContent == \"secret\"cdw)", {"public.txt", "closed", "unlisted/in"}},
      {"kMDItemFSNodeCount > 0", {"closed"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.query);
    EXPECT_THAT(found(c.query, stranger()), testing::UnorderedElementsAreArray(c.paths));
  }
}

TEST_F(LiveSearchTest, FindsNamesOfAnyBytes) {
  const std::vector<std::string> names = {"report\xff.txt", "report\nline.txt",
                                          "report" + std::string(245, 'x') + ".txt",
                                          "report \xE2\x80\xAE gpj.txt"};
  for (const std::string& name : names) tree_.file(name);
  EXPECT_THAT(found("kMDItemFSName == \"report*\""), testing::UnorderedElementsAreArray(names));
}

TEST_F(LiveSearchTest, NeverOpensPipesSocketsOrWhatLinksLeadTo) {
  tree_.file("word.txt", "needle");
  ASSERT_EQ(mkfifo((tree_ / "pipe.txt").c_str(), 0644), 0);
  tree_.link("link.txt", "word.txt");
  const Descriptor server(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (tree_ / "socket.txt").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(server.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_THAT(found("kMDItemTextContent == \"needle\""), ElementsAre("word.txt"));
  EXPECT_EQ(found("kMDItemFSName == \"*.txt\"").size(), 4U);
}

TEST_F(LiveSearchTest, EndsWhileAnotherProcessMakesAndRemovesFiles) {
  for (int i = 0; i < 40; ++i) tree_.file("stays/d" + std::to_string(i) + "/stays.txt", "word");
  tree_.folder("comes-and-goes");
  const pid_t other = fork();
  if (other == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const std::string home = tree_ / "comes-and-goes";
    for (;;) {
      for (int i = 0; i < 50; ++i) {
        const std::string folder = home + "/d" + std::to_string(i);
        mkdir(folder.c_str(), 0755);
        mknod((folder + "/f.txt").c_str(), S_IFREG | 0644, 0);
        if (symlink("..", (folder + "/up").c_str()) != 0) _exit(1);
      }
      for (int i = 0; i < 50; ++i) {
        const std::string folder = home + "/d" + std::to_string(i);
        unlink((folder + "/f.txt").c_str());
        unlink((folder + "/up").c_str());
        rmdir(folder.c_str());
      }
    }
  }
  for (int round = 0; round < 20; ++round) {
    EXPECT_EQ(found("kMDItemFSName == \"stays.txt\" && kMDItemTextContent == \"word\"").size(),
              40U);
    EXPECT_GE(found("kMDItemFSSize >= 0").size(), 82U);
  }
  EXPECT_EQ(waitpid(other, nullptr, WNOHANG), 0) << "the other process ended early";
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
}

/// Which of the paths the kernel lets the account open, asked by a process that became it.
std::set<std::string> openableBy(const Credentials& who, const std::vector<std::string>& paths) {
  int ends[2];
  if (pipe(ends) != 0) return {};
  const pid_t child = fork();
  if (child == 0) {
    const std::vector<gid_t> groups(who.groups().begin(), who.groups().end());
    if (setgroups(groups.size(), groups.data()) != 0 || setgid(who.gid()) != 0 ||
        setuid(who.uid()) != 0) {
      _exit(1);
    }
    for (const std::string& path : paths) {
      const char verdict = open(path.c_str(), O_RDONLY | O_CLOEXEC) >= 0 ? '1' : '0';
      if (write(ends[1], &verdict, 1) != 1) _exit(1);
    }
    _exit(0);
  }
  close(ends[1]);
  std::set<std::string> openable;
  char verdict = '0';
  for (std::size_t i = 0; read(ends[0], &verdict, 1) == 1; ++i) {
    if (verdict == '1') openable.insert(paths.at(i));
  }
  close(ends[0]);
  int status = 1;
  waitpid(child, &status, 0);
  if (status != 0) throw std::runtime_error("the child could not become the user");
  return openable;
}

TEST_F(LiveSearchTest, FindsExactlyWhatTheUserCouldOpen) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become other users";
  constexpr std::uint32_t kSeed = 4711;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 random(kSeed);
  const auto pick = [&](std::uint32_t below) { return static_cast<unsigned>(random() % below); };
  std::vector<std::string> folders = {tree_.path()};
  std::vector<std::string> paths;
  for (int i = 0; i < 700; ++i) {
    const std::string& holder = folders[pick(static_cast<std::uint32_t>(folders.size()))];
    const std::string path = holder + "/n" + std::to_string(i);
    if (i % 4 == 0) {
      ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
      folders.push_back(path);
    } else {
      ASSERT_EQ(mknod(path.c_str(), S_IFREG | 0644, 0), 0);
    }
    paths.push_back(path);
  }
  for (const std::string& path : paths) {
    ASSERT_EQ(chown(path.c_str(), 20000 + pick(8), 30000 + pick(4)), 0);
    ASSERT_EQ(chmod(path.c_str(), pick(3) == 0 ? pick(512) : 0755), 0);
    if (pick(3) != 0) continue;
    const std::string text = "u::rwx,g::r-x,m::" + std::string(pick(2) != 0 ? "r-x" : "---") +
                             ",o::" + (pick(2) != 0 ? "r-x" : "---") +
                             ",u:" + std::to_string(20000 + pick(8)) + ":" +
                             (pick(2) != 0 ? "r-x" : "---");
    acl_t list = acl_from_text(text.c_str());
    ASSERT_EQ(acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list), 0);
    acl_free(list);
  }
  for (std::uint32_t user = 0; user < 8; ++user) {
    const Credentials who(20000 + user, 30000 + pick(4), {30000 + pick(4)});
    const LiveSearchResult result = search("true", {tree_.path()}, who);
    std::set<std::string> hits;
    for (std::size_t i = 0; i < result.hits.size(); ++i) {
      hits.insert(result.hits.pathOf(result.hits[i]));
    }
    EXPECT_EQ(hits, openableBy(who, paths)) << "user " << user;
    EXPECT_FALSE(hits.empty());
    EXPECT_LT(hits.size(), paths.size());
  }
}

}  // namespace
}  // namespace vt
