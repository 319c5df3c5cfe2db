#include "metadata/watch/InotifyWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>

#include "metadata/live/LiveTree.h"
#include "metadata/watch/WatchedFiles.h"
#include "support/InChildProcess.h"

namespace vt {
namespace {

using testing::HasSubstr;

/// Runs `work` as a user who may have so many watches.
std::string withWatches(int most, const std::function<std::string()>& work) {
  return inChildProcess([&]() -> std::string {
    const uid_t user = geteuid();
    if (unshare(CLONE_NEWUSER) != 0) return "no user namespace";
    std::ofstream("/proc/self/uid_map") << user << " " << user << " 1";
    std::ofstream limit("/proc/sys/user/max_inotify_watches");
    if (!(limit << most << std::flush)) return "no limit";
    return work();
  });
}

std::string joined(const std::vector<std::string>& paths, const LiveTree& tree) {
  std::string text;
  for (const std::string& path : paths) text += " " + path.substr(tree.path().size() + 1);
  return text;
}

TEST(InotifyWatch, SaysWhatIsNotWatchedWhenWatchesRunOut) {
  const LiveTree tree;
  for (const char* name : {"a/x/y", "b/x/y", "c/x/y"}) tree.folder(name);
  const std::string answer = withWatches(5, [&] {
    WatchedFiles<InotifyWatch> watched({tree.path()});
    InotifyWatch& watch = watched.watch();
    const WatchCounts counts = watch.counts();
    std::string words = std::to_string(counts.watched) + " and " + std::to_string(counts.unwatched);
    words += " without:" + joined(watch.unwatched(), tree);
    words += " " + watch.whyUnwatched();
    // The folders on top have the watches.
    tree.file("c/file");
    words += "|" + joined(watched.collectAndTake().entries, tree);
    // What is freed goes to the others.
    std::filesystem::remove_all(tree / "a");
    watched.collectAndTake();
    watch.watchUnwatched(watched.now());
    words += "|" + std::to_string(watch.counts().unwatched);
    return words;
  });
  if (answer == "no user namespace" || answer == "no limit") GTEST_SKIP() << answer;
  std::size_t bar = answer.find('|');
  EXPECT_THAT(answer.substr(0, bar), HasSubstr("No space left on device"));
  EXPECT_THAT(answer.substr(0, bar), HasSubstr("5 and 5 without:"));
  EXPECT_THAT(answer.substr(bar), HasSubstr("| c/file|"));
  EXPECT_THAT(answer.substr(bar), HasSubstr("|2"));
}

TEST(InotifyWatch, WatchesAFolderThatBecomesReadable) {
  if (geteuid() != 0) GTEST_SKIP() << "needs the superuser, who becomes another";
  const LiveTree tree;
  tree.file("closed/inner/file");
  std::filesystem::permissions(tree / "closed", std::filesystem::perms(0));
  for (const char* name : {".", "closed", "closed/inner"}) {
    ASSERT_EQ(chown((tree / name).c_str(), 2001, 2001), 0);
  }
  const std::string answer = inChildProcess([&]() -> std::string {
    if (setuid(2001) != 0) return "no other user";
    WatchedFiles<InotifyWatch> watched({tree.path()});
    chmod((tree / "closed").c_str(), 0700);
    std::string words = joined(watched.collectAndTake().trees, tree);
    tree.file("closed/inner/new");
    words += "|" + joined(watched.collectAndTake().entries, tree);
    return words + "|" + std::to_string(watched.watch().counts().unwatched);
  });
  EXPECT_EQ(answer, " closed| closed/inner/new|0");
}

TEST(InotifyWatch, FollowsAFolderThatWasMadeMovedAndMadeAnewBeforeItCouldBeSeen) {
  const LiveTree tree;
  WatchedFiles<InotifyWatch> watched({tree.path()});
  tree.folder("a");
  std::filesystem::rename(tree / "a", tree / "b");
  tree.folder("a");
  watched.collectAndTake();
  tree.file("a/one");
  tree.file("b/two");
  EXPECT_EQ(joined(watched.collectAndTake().entries, tree), " a/one b/two");
}

TEST(InotifyWatch, FollowsAFolderWhoseParentMovedBeforeItCouldBeSeen) {
  const LiveTree tree;
  tree.folder("old/a");
  WatchedFiles<InotifyWatch> watched({tree.path()});
  tree.folder("old/a/new");
  std::filesystem::rename(tree / "old", tree / "young");
  watched.collectAndTake();
  tree.file("young/a/new/file");
  EXPECT_EQ(joined(watched.collectAndTake().entries, tree), " young/a/new/file");
}

}  // namespace
}  // namespace vt
