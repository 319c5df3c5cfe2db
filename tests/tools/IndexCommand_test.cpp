#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "metadata/types/ShippedTypes.h"
#include "metadata/update/IndexUpdater.h"
#include "support/Places.h"
#include "support/RunningProgram.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

class IndexCommand : public CommandTest {
 protected:
  ProgramResult index(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "index");
    return vistaro(std::move(arguments));
  }
  ProgramResult indexTree() const { return index({"--once", tree_.path()}); }
  json status() const { return json::parse(index({"--status", "--json"}).output); }
  /// A search by name alone, which an index can answer.
  ProgramResult find(const std::string& name) const {
    return search({"--raw", "kMDItemFSName == \"" + name + "\""});
  }
  std::unique_ptr<RunningProgram> indexer() const {
    return std::make_unique<RunningProgram>(
        std::vector<std::string>{builtProgram("vistaro"), "index", tree_.path()}, environment());
  }
  std::string indexFolder() const { return root_ / "var/lib/vistaro/index"; }
};

TEST_F(IndexCommand, MakesTheIndexThatSearchesAreAnsweredFrom) {
  addFile("a.dat");
  const ProgramResult walked = find("a.dat");
  EXPECT_EQ(walked.exitCode, 0);
  EXPECT_EQ(walked.errors, kWalkedWithoutIndex);
  const ProgramResult made = indexTree();
  EXPECT_EQ(made.exitCode, 0) << made.errors;
  EXPECT_THAT(made.output, MatchesRegex("generation 1: 1 files in 1 folders, crawled in [0-9.]+ s, "
                                        "written in [0-9.]+ s\n"));
  const ProgramResult found = find("a.dat");
  EXPECT_EQ(found.exitCode, 0);
  EXPECT_EQ(found.errors, "");
  EXPECT_THAT(found.output, HasSubstr("a.dat"));
}

TEST_F(IndexCommand, TellsOfWhatWasUpdatedSinceACrawl) {
  addFile("goes.pdf");
  addFile("stays.pdf");
  ASSERT_EQ(index({"--once", "--names-only", tree_.path()}).exitCode, 0);
  std::filesystem::remove(tree_ / "goes.pdf");
  addFile("came.pdf");
  {
    const ContentTypes types = shippedTypes();
    const IndexFolder folder = IndexFolder::open(indexFolder()).value();
    const IndexLock lock = folder.lock().value();
    IndexUpdater updater(folder, lock, types);
    // Shown to the second, so a later one.
    const Date vouched = std::chrono::floor<Date::duration>(std::chrono::system_clock::now()) +
                         std::chrono::seconds(1);
    const std::vector<std::string> entries = {tree_ / "goes.pdf", tree_ / "came.pdf"};
    ASSERT_TRUE(updater.apply({entries, {}, {}}, vouched));
  }
  const json told = status();
  EXPECT_EQ(told["files"], 2);
  EXPECT_EQ(told["baseRows"], 2);
  EXPECT_EQ(told["deadRows"], 1);
  EXPECT_EQ(told["deltaRows"], 1);
  EXPECT_GT(told["vouched"], told["began"]);
  EXPECT_THAT(index({"--status"}).output,
              HasSubstr("2 in the base, 1 of them dead, and 1 in the delta"));
  EXPECT_THAT(index({"--verify"}).output, HasSubstr("generation 2 is sound: 2 files"));
  EXPECT_EQ(find("goes.pdf").exitCode, 1);
  const ProgramResult found = find("came.pdf");
  EXPECT_EQ(found.exitCode, 0);
  EXPECT_EQ(found.errors, "") << "it was walked";
}

TEST_F(IndexCommand, LetsSearchesWalkWhatItDoesNotHold) {
  addFile("a.pdf");
  const TemporaryFolder other;
  ASSERT_EQ(index({"--once", other.path()}).exitCode, 0);
  EXPECT_THAT(find("a.pdf").errors,
              HasSubstr("since the index does not hold " + tree_.path().string()));
  ASSERT_EQ(indexTree().exitCode, 0);
  EXPECT_EQ(search({"words in a text"}).errors, "");
}

TEST_F(IndexCommand, IndexesTheSearchFoldersOfTheSettings) {
  addFile("a/one.pdf");
  addFile("b/two.pdf");
  ASSERT_EQ(vistaro({"folders", "add", tree_ / "a"}).exitCode, 0);
  ASSERT_EQ(vistaro({"folders", "add", tree_ / "b"}).exitCode, 0);
  ASSERT_EQ(vistaro({"folders", "group", "Both", "a", "b"}).exitCode, 0);
  std::filesystem::remove_all(tree_ / "b");
  const ProgramResult made = index({"--once"});
  EXPECT_EQ(made.exitCode, 0);
  EXPECT_THAT(made.errors, HasSubstr("note: " + tree_ / "b" + ": No such file"));
  EXPECT_THAT(status()["roots"], ElementsAre(tree_ / "a"));
}

TEST_F(IndexCommand, SaysWhenThereIsNothingToIndex) {
  const ProgramResult none = index({"--once"});
  EXPECT_EQ(none.exitCode, 2);
  EXPECT_THAT(none.errors, HasSubstr("there is nothing to index"));
  const ProgramResult missing = index({"--once", tree_ / "missing"});
  EXPECT_EQ(missing.exitCode, 2);
  EXPECT_THAT(missing.errors, HasSubstr("missing: No such file or directory"));
  addFile("file");
  EXPECT_THAT(index({"--once", tree_ / "file"}).errors, HasSubstr("Not a directory"));
}

TEST_F(IndexCommand, LeavesWhenAnotherIndexes) {
  const auto first = indexer();
  ASSERT_NE(first->waitForLine("generation 1"), "");
  const ProgramResult second = indexTree();
  EXPECT_EQ(second.exitCode, 3);
  EXPECT_THAT(second.errors, HasSubstr(std::to_string(first->pid())));
  EXPECT_EQ(status()["generation"], 1);
  EXPECT_EQ(status()["indexing"], true);
  first->end();
  EXPECT_EQ(status()["indexing"], false);
  EXPECT_EQ(indexTree().exitCode, 0);
}

TEST_F(IndexCommand, CrawlsAgainAtOnceWhenItIsAskedTo) {
  const auto running = indexer();
  ASSERT_NE(running->waitForLine("generation 1: 0 files"), "");
  addFile("new.pdf");
  kill(running->pid(), SIGUSR1);
  EXPECT_NE(running->waitForLine("generation 2: 1 files"), "");
  EXPECT_EQ(find("new.pdf").errors, "");
}

TEST_F(IndexCommand, GoesOnAfterACrawlThatFailed) {
  const auto running = indexer();
  ASSERT_NE(running->waitForLine("generation 1"), "");
  // A folder in the way of the next generation's file.
  std::filesystem::create_directories(indexFolder() + "/manifest.tmp/in the way");
  kill(running->pid(), SIGUSR1);
  EXPECT_THAT(running->waitForLine("vistaro: "), HasSubstr("manifest.tmp"));
  EXPECT_EQ(status()["generation"], 1);
  std::filesystem::remove_all(indexFolder() + "/manifest.tmp");
  kill(running->pid(), SIGUSR1);
  EXPECT_NE(running->waitForLine("files in"), "");
}

TEST_F(IndexCommand, ReadsAllAnewWhenTheIndexIsDamaged) {
  addFile("a.dat");
  ASSERT_EQ(indexTree().exitCode, 0);
  EXPECT_THAT(index({"--verify"}).output,
              MatchesRegex("generation 1 is sound: 1 files, [0-9]+ bytes\n"
                           "the catalogue is sound: 0 files looked into, 0 to be looked into, 0 "
                           "gone since\n"));
  std::fstream(indexFolder() + "/segment-1", std::ios::in | std::ios::out).seekp(1025).put('?');
  const ProgramResult damaged = index({"--verify"});
  EXPECT_EQ(damaged.exitCode, 3);
  EXPECT_THAT(damaged.errors, HasSubstr("segment-1 is damaged"));
  const ProgramResult again = indexTree();
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_THAT(again.errors, ContainsRegex("segment-1 is damaged.*all was read anew"));
  EXPECT_EQ(index({"--verify"}).exitCode, 0);
}

TEST_F(IndexCommand, TellsWhatTheIndexHolds) {
  addFile("a.pdf");
  addFile("sub/b.pdf");
  const ProgramResult missing = index({"--status"});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_THAT(missing.output, HasSubstr("State       missing"));
  ASSERT_EQ(indexTree().exitCode, 0);
  const ProgramResult fresh = index({"--status"});
  EXPECT_EQ(fresh.exitCode, 0);
  EXPECT_THAT(fresh.output, HasSubstr("State       fresh\nGeneration  1\nHolds       " +
                                      tree_.path().string() + "\nFiles       3 in 1 folders, "));
  EXPECT_THAT(fresh.output, HasSubstr("\nIndexer     not running\n"));
  const json report = status();
  EXPECT_EQ(report["state"], "fresh");
  EXPECT_EQ(report["files"], 3);
  EXPECT_EQ(report["folders"], 1);
  EXPECT_EQ(report["bytes"], std::filesystem::file_size(indexFolder() + "/segment-1"));
  EXPECT_THAT(report["began"].get<std::string>(), MatchesRegex("20.*T.*Z"));
}

TEST_F(IndexCommand, LooksIntoTextFiles) {
  addFile("a.dat");
  write(tree_ / "notes.txt", "the budget of 2024");
  const ProgramResult made = indexTree();
  EXPECT_THAT(made.output, ContainsRegex("\n  1 files looked into in [0-9.]+ s\n"));
  EXPECT_THAT(indexTree().output, Not(HasSubstr("looked into")));
  const ProgramResult found = search({"--raw", "kMDItemTextContent == \"budg*\"cdw"});
  EXPECT_EQ(found.errors, "");
  EXPECT_THAT(found.output, HasSubstr("notes.txt"));
  EXPECT_THAT(index({"--verify"}).output, HasSubstr("1 files looked into, 0 to be looked into"));
  const json report = status();
  EXPECT_EQ(report["contents"], 1);
  EXPECT_EQ(report["texts"], 1);
  EXPECT_EQ(report["filesNotLookedInto"], 0);
  EXPECT_EQ(report["failures"], 0);
  EXPECT_THAT(index({"--status"}).output,
              HasSubstr("\nContents    1 files, 1 with text, 0 attributes; 0 to be looked into\n"));
}

TEST_F(IndexCommand, LooksIntoNoFileWhenOnlyNamesAreWanted) {
  write(tree_ / "notes.txt", "the budget of 2024");
  ASSERT_EQ(index({"--once", "--names-only", tree_.path()}).exitCode, 0);
  EXPECT_FALSE(std::filesystem::exists(indexFolder() + "/catalogue"));
  const ProgramResult found = search({"budget"});
  EXPECT_THAT(found.errors, HasSubstr("since the index holds no text"));
  EXPECT_THAT(found.output, HasSubstr("notes.txt"));
}

TEST_F(IndexCommand, MakesADamagedCatalogueAnew) {
  write(tree_ / "notes.txt", "the budget of 2024");
  ASSERT_EQ(indexTree().exitCode, 0);
  std::ofstream(indexFolder() + "/catalogue") << std::string(20'000, 'x');
  EXPECT_EQ(index({"--verify"}).exitCode, 3);
  EXPECT_THAT(status()["contentError"].get<std::string>(), HasSubstr("catalogue is damaged"));
  const ProgramResult again = indexTree();
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_THAT(again.errors, HasSubstr("all files are looked into anew"));
  EXPECT_EQ(index({"--verify"}).exitCode, 0);
}

TEST_F(IndexCommand, KeepsTheIndexFromOthers) {
  ASSERT_EQ(indexTree().exitCode, 0);
  struct stat folder{};
  ASSERT_EQ(stat(indexFolder().c_str(), &folder), 0);
  EXPECT_EQ(folder.st_mode & 07777U, 0700U);
  std::filesystem::permissions(indexFolder(), std::filesystem::perms(0750));
  for (const ProgramResult& refused : {indexTree(), index({"--status"}), index({"--verify"})}) {
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_THAT(refused.output + refused.errors, HasSubstr("has mode 0750"));
  }
  EXPECT_THAT(find("a").errors, HasSubstr("has mode 0750"));
}

TEST_F(IndexCommand, RefusesAnIndexFolderOfSomebodyElse) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  ASSERT_EQ(indexTree().exitCode, 0);
  ASSERT_EQ(chown(indexFolder().c_str(), 2001, 2001), 0);
  const ProgramResult refused = indexTree();
  EXPECT_EQ(refused.exitCode, 3);
  EXPECT_THAT(refused.errors, HasSubstr("belongs to user 2001"));
}

TEST_F(IndexCommand, RefusesOptionsThatExcludeEachOther) {
  EXPECT_EQ(index({"--status", "--verify"}).exitCode, 2);
  EXPECT_EQ(index({"--status", "--once"}).exitCode, 2);
  EXPECT_EQ(index({"--verify", tree_.path()}).exitCode, 2);
  EXPECT_EQ(index({"--json", tree_.path()}).exitCode, 2);
  EXPECT_EQ(index({"--every", "0", tree_.path()}).exitCode, 2);
  EXPECT_EQ(index({"--every", "11", tree_.path()}).exitCode, 2);
}

TEST_F(IndexCommand, EndsBySignalWithNothingHalfDone) {
  const auto running = indexer();
  ASSERT_NE(running->waitForLine("generation 1"), "");
  running->end();
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(indexFolder())) {
    names.push_back(entry.path().filename());
  }
  EXPECT_THAT(names, testing::UnorderedElementsAre("catalogue", "lock", "manifest", "segment-1"));
}

}  // namespace
}  // namespace vt
