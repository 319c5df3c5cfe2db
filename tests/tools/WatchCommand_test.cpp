#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "support/Eventually.h"
#include "support/Places.h"
#include "support/RunningProgram.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;

class WatchCommand : public CommandTest {
 protected:
  std::unique_ptr<RunningProgram> watcher(std::vector<std::string> arguments = {}) const {
    arguments.insert(arguments.begin(), {builtProgram("vistaro"), "index", "--watch"});
    return std::make_unique<RunningProgram>(arguments, environment());
  }
  json status() const { return json::parse(vistaro({"index", "--status", "--json"}).output); }
  /// Whether a search finds the name in the index alone.
  bool isFound(const std::string& name) const {
    const ProgramResult found = search({"--raw", "kMDItemFSName == \"" + name + "\""});
    return found.exitCode == 0 && found.errors.empty();
  }
  bool isFoundByText(const std::string& words) const {
    const ProgramResult found = search({"--raw", "kMDItemTextContent == \"" + words + "\"cdw"});
    return found.exitCode == 0 && found.errors.empty();
  }
  std::string indexFolder() const { return root_ / "var/lib/vistaro/index"; }
};

TEST_F(WatchCommand, PublishesWhatChangesWithoutBeingAsked) {
  addFile("first.pdf");
  const auto running = watcher({tree_.path()});
  ASSERT_NE(running->waitForLine("generation 1: 1 files"), "");
  EXPECT_THAT(running->output(), ContainsRegex("watching .* by (fanotify|inotify)"));
  addFile("second.pdf");
  EXPECT_TRUE(eventually([&] { return isFound("second.pdf"); }));
  std::filesystem::rename(tree_ / "second.pdf", tree_ / "third.pdf");
  EXPECT_TRUE(eventually([&] { return isFound("third.pdf") && !isFound("second.pdf"); }));
}

TEST_F(WatchCommand, LooksIntoWhatChangesOnceItsNameIsPublished) {
  const auto running = watcher({tree_.path()});
  ASSERT_NE(running->waitForLine("generation 1"), "");
  write(tree_ / "notes.txt", "the budget of 2024");
  EXPECT_TRUE(eventually([&] { return isFoundByText("budget"); }));
  write(tree_ / "notes.txt", "the forecast of 2025");
  EXPECT_TRUE(eventually([&] { return isFoundByText("forecast"); }));
}

TEST_F(WatchCommand, TellsHowItWatches) {
  const auto running = watcher({tree_.path()});
  ASSERT_NE(running->waitForLine("generation 1"), "");
  addFile("a.pdf");
  ASSERT_TRUE(eventually([&] { return status().value("watch", json()).contains("lastChange"); }));
  const json report = status();
  EXPECT_EQ(report["state"], "fresh");
  EXPECT_LT(report["ageSeconds"], 60);
  EXPECT_THAT(report["watch"]["by"], testing::AnyOf("fanotify", "inotify"));
  EXPECT_EQ(report["watch"]["unwatched"], 0);
  EXPECT_GE(report["watch"]["watched"], 1);
  EXPECT_EQ(report["watch"]["lastChangePlaces"], 1);
  const std::string text = vistaro({"index", "--status"}).output;
  EXPECT_THAT(
      text, ContainsRegex("\nWatched     by (fanotify|inotify), [0-9]+ .*, [0-9]+ names? waiting; "
                          "up to date [0-9]+ s ago\n"));
  EXPECT_THAT(text, HasSubstr("\nLast change "));
  running->end();
  EXPECT_FALSE(status().contains("watch"));
}

TEST_F(WatchCommand, TakesFoldersThatAreAddedToTheSettings) {
  addFile("a/one.pdf");
  addFile("b/two.pdf");
  ASSERT_EQ(vistaro({"folders", "add", tree_ / "a"}).exitCode, 0);
  const auto running = watcher();
  ASSERT_NE(running->waitForLine("generation 1: 1 files"), "");
  ASSERT_EQ(vistaro({"folders", "add", tree_ / "b"}).exitCode, 0);
  EXPECT_NE(running->waitForLine("generation 2: 2 files"), "");
  addFile("b/three.pdf");
  EXPECT_TRUE(eventually([&] { return status()["files"] == 3; }));
  ASSERT_EQ(vistaro({"folders", "remove", "a"}).exitCode, 0);
  EXPECT_NE(running->waitForLine(": 2 files"), "");
}

TEST_F(WatchCommand, OutlivesAFolderThatGoesAndComesBack) {
  addFile("a/one.pdf");
  addFile("b/two.pdf");
  const auto running = watcher({tree_ / "a", tree_ / "b"});
  ASSERT_NE(running->waitForLine("generation 1: 2 files"), "");
  std::filesystem::rename(tree_ / "b", tree_ / "away");
  EXPECT_THAT(running->waitForLine("note: "), HasSubstr(tree_ / "b" + ": No such file"));
  EXPECT_NE(running->waitForLine(": 1 files"), "");
  std::filesystem::rename(tree_ / "a", tree_ / "away too");
  EXPECT_NE(running->waitForLine("there is nothing to index"), "");
  std::filesystem::rename(tree_ / "away", tree_ / "b");
  EXPECT_NE(running->waitForLine(": 1 files"), "");
  addFile("b/three.pdf");
  EXPECT_TRUE(eventually([&] { return status()["files"] == 2; }));
}

TEST_F(WatchCommand, CrawlsAtOnceWhenItIsAskedTo) {
  const auto running = watcher({tree_.path()});
  ASSERT_NE(running->waitForLine("generation 1"), "");
  kill(running->pid(), SIGUSR1);
  EXPECT_NE(running->waitForLine("generation 2"), "");
}

TEST_F(WatchCommand, SaysWhatKeepsItFromPublishingAndTriesAgain) {
  const auto running = watcher({tree_.path()});
  ASSERT_NE(running->waitForLine("generation 1"), "");
  std::filesystem::create_directories(indexFolder() + "/manifest.tmp/in the way");
  addFile("new.pdf");
  EXPECT_THAT(running->waitForLine("note: "), HasSubstr("manifest.tmp"));
  EXPECT_TRUE(eventually([&] { return status()["watch"].contains("error"); }));
  EXPECT_EQ(status()["generation"], 1);
  std::filesystem::remove_all(indexFolder() + "/manifest.tmp");
  EXPECT_NE(running->waitForLine("all is well again"), "");
  EXPECT_TRUE(isFound("new.pdf"));
}

TEST_F(WatchCommand, IsNotSetOffByTheIndexThatItWrites) {
  // The index lies in what is indexed.
  const auto running = watcher({root_.path()});
  ASSERT_NE(running->waitForLine("generation 1"), "");
  write(root_ / "tmp/file", "x");
  ASSERT_TRUE(eventually([&] { return status()["generation"] > 1; }));
  const auto generation = [&] { return status()["generation"].get<int>(); };
  // Each look at the state takes longer than it would to publish again.
  int last = 0;
  ASSERT_TRUE(eventually([&] { return std::exchange(last, generation()) == generation(); }));
  for (int i = 0; i < 50; ++i) ASSERT_EQ(generation(), last);
}

TEST_F(WatchCommand, WatchesForAnyUser) {
  if (!canRunAs(2001)) GTEST_SKIP() << "needs the superuser, and a program that others can run";
  const TemporaryFolder index;
  ASSERT_EQ(chown(index.path().c_str(), 2001, 2001), 0);
  ASSERT_EQ(chown(tree_.path().c_str(), 2001, 2001), 0);
  std::map<std::string, std::string> variables = environment();
  variables["VISTARO_INDEX"] = index / "of ann";
  RunningProgram running(asUser(2001, {builtProgram("vistaro"), "index", "--watch", tree_.path()}),
                         variables);
  ASSERT_NE(running.waitForLine("generation 1"), "");
  EXPECT_THAT(running.output(), ContainsRegex("watching 1 folder by inotify, since fanotify "
                                              "cannot .*Operation not permitted"));
  addFile("new.pdf");
  const auto files = [&] {
    const ProgramResult told = runProgram(
        asUser(2001, {builtProgram("vistaro"), "index", "--status", "--json"}), variables);
    return json::parse(told.output)["files"];
  };
  EXPECT_TRUE(eventually([&] { return files() == 1; }));
}

TEST_F(WatchCommand, EndsBySignalWithNothingHalfDone) {
  const auto running = watcher({tree_.path()});
  ASSERT_NE(running->waitForLine("generation 1"), "");
  ASSERT_TRUE(eventually([&] { return std::filesystem::exists(indexFolder() + "/watcher"); }));
  running->end();
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(indexFolder())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("catalogue", "lock", "manifest", "segment-1",
                                                   "watcher", "watcher.tmp"));
}

TEST_F(WatchCommand, RefusesOptionsThatExcludeEachOther) {
  const auto refused = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "index");
    return vistaro(arguments).exitCode == 2;
  };
  EXPECT_TRUE(refused({"--watch", "--once", tree_.path()}));
  EXPECT_TRUE(refused({"--watch", "--status"}));
  EXPECT_TRUE(refused({"--watch", "--verify"}));
  EXPECT_TRUE(refused({"--crawl-every", "5", tree_.path()}));
  EXPECT_TRUE(refused({"--watch", "--crawl-every", "0", tree_.path()}));
  EXPECT_TRUE(refused({"--watch", "--crawl-every", "169", tree_.path()}));
  EXPECT_TRUE(refused({"--watch"}));
  EXPECT_TRUE(refused({"--watch", tree_ / "missing"}));
}

}  // namespace
}  // namespace vt
