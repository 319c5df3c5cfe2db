// What the indexer does when the disk of its index is full or read-only, and when what it watches
// is unmounted: as a process, on file systems of their own.

#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <nlohmann/json.hpp>

#include "support/Eventually.h"
#include "support/Places.h"
#include "support/PrivateMounts.h"
#include "support/RunningProgram.h"
#include "tools/CommandTest.h"

namespace vt {
namespace {

using nlohmann::json;

/// Each test runs where it may mount, and says there what did not hold; "" when all did.
class FullDisk : public CommandTest {
 protected:
  void expect(const std::function<void()>& work) {
    const std::string broken = withMounts([&] {
      std::filesystem::create_directories(indexFolder());
      mountAt(indexFolder(), "tmpfs", "size=16m,mode=700");
      work();
      return broken_;
    });
    if (broken == kNoMounts) GTEST_SKIP() << broken;
    EXPECT_EQ(broken, "");
  }
  void check(bool holds, const char* what) {
    if (!holds) broken_ += std::string(what) + "; ";
  }
  void checkSoon(const std::function<bool()>& holds, const char* what) {
    check(eventually(holds), what);
  }

  /// Fills the disk up to so many bytes.
  void fill(std::size_t left) const {
    std::filesystem::remove(filler());
    const std::filesystem::space_info space = std::filesystem::space(indexFolder());
    std::ofstream file(filler(), std::ios::binary);
    file << std::string(space.available > left ? space.available - left : 0, 'x');
  }
  void makeRoom() const { std::filesystem::remove(filler()); }

  std::unique_ptr<RunningProgram> watcher() const {
    return std::make_unique<RunningProgram>(
        std::vector<std::string>{builtProgram("vistaro"), "index", "--watch", tree_.path()},
        environment());
  }
  json status() const { return json::parse(vistaro({"index", "--status", "--json"}).output); }
  /// What the watcher says of the trouble it is in.
  std::string told(const char* key) const {
    return status().value("watch", json::object()).value(key, "");
  }
  bool isFound(const std::string& query) const {
    const ProgramResult found = search({"--raw", query});
    return found.exitCode == 0 && found.errors.empty();
  }
  bool isNameFound(const std::string& name) const {
    return isFound("kMDItemFSName == \"" + name + "\"");
  }
  bool isTextFound(const std::string& word) const {
    return isFound("kMDItemTextContent == \"" + word + "\"");
  }
  static std::size_t countOf(const std::string& text, const std::string& in) {
    std::size_t count = 0;
    for (std::size_t at = in.find(text); at != in.npos; at = in.find(text, at + 1)) ++count;
    return count;
  }
  std::string indexFolder() const { return root_ / "var/lib/vistaro/index"; }
  std::string filler() const { return indexFolder() + "/filler"; }

  std::string broken_;
};

constexpr const char* kNoSpace = "No space left on device";
constexpr const char* kWell = "all is well again";

TEST_F(FullDisk, KeepsWhatIsPublishedServingUntilThereIsRoom) {
  expect([this] {
    addFile("first.pdf");
    const auto running = watcher();
    check(!running->waitForLine("generation 1: 1 files").empty(), "first crawl");
    checkSoon([&] { return std::filesystem::exists(indexFolder() + "/watcher"); }, "record");
    fill(0);
    addFile("second.pdf");
    check(!running->waitForLine(kNoSpace).empty(), "reason in the log");
    checkSoon([&] { return told("error").find(kNoSpace) != std::string::npos; }, "in the status");
    check(status()["generation"] == 1, "old generation");
    check(isNameFound("first.pdf"), "old generation serves");
    std::filesystem::remove(tree_ / "first.pdf");
    makeRoom();
    check(!running->waitForLine(kWell).empty(), "end of the trouble");
    check(countOf(kNoSpace, running->output()) == 1, "told once");
    checkSoon([&] { return isNameFound("second.pdf") && !isNameFound("first.pdf"); },
              "found later");
    checkSoon([&] { return told("error").empty(); }, "no trouble in the status");
    check(vistaro({"index", "--verify"}).exitCode == 0, "sound");
  });
}

TEST_F(FullDisk, FindsTextsOnceTheCatalogueHasRoom) {
  expect([this] {
    write(tree_ / "old.txt", "forecast");
    const auto running = watcher();
    check(!running->waitForLine("1 files looked into").empty(), "first crawl");
    fill(std::size_t{80} << 10);
    std::string words = "budget";
    for (int word = 0; word < 20'000; ++word) words += " w" + std::to_string(word * 7919);
    write(tree_ / "new.txt", words);
    check(!running->waitForLine("files were not looked into").empty(), "reason in the log");
    checkSoon([&] { return isNameFound("new.txt"); }, "names are published");
    checkSoon([&] { return !told("contentError").empty(); }, "in the status");
    makeRoom();
    check(!running->waitForLine(kWell).empty(), "end of the trouble");
    checkSoon([&] { return isTextFound("budget") && isTextFound("forecast"); }, "texts");
    check(vistaro({"index", "--verify"}).exitCode == 0, "sound");
  });
}

TEST_F(FullDisk, GoesOnWithoutMergingUntilThereIsRoom) {
  expect([this] {
    for (int file = 0; file < 5000; ++file) addFile("base/" + std::to_string(file));
    const auto running = watcher();
    check(!running->waitForLine("generation 1:").empty(), "first crawl");
    checkSoon([&] { return std::filesystem::exists(indexFolder() + "/watcher"); }, "record");
    // There is room for two deltas, as one replaces the other, but not for a base.
    fill(std::size_t{320} << 10);
    for (int file = 0; file < 1100; ++file) addFile("a/" + std::to_string(file));
    check(!running->waitForLine(kNoSpace).empty(), "reason in the log");
    checkSoon([&] { return !told("mergeError").empty(); }, "in the status");
    check(told("error").empty(), "updates go on");
    checkSoon([&] { return isFound("kMDItemPath == \"*/a/1099\""); }, "published all the same");
    makeRoom();
    for (int file = 0; file < 1100; ++file) addFile("b/more " + std::to_string(file));
    check(!running->waitForLine(kWell).empty(), "end of the trouble");
    checkSoon([&] { return isNameFound("more 1099"); }, "found later");
    checkSoon([&] { return status()["baseRows"] > 6000; }, "merged");
    check(vistaro({"index", "--verify"}).exitCode == 0, "sound");
  });
}

TEST_F(FullDisk, PublishesNothingOfACrawlThatHasNoRoom) {
  expect([this] {
    addFile("first.pdf");
    check(vistaro({"index", "--once", tree_.path()}).exitCode == 0, "first crawl");
    fill(0);
    addFile("second.pdf");
    const ProgramResult full = vistaro({"index", "--once", tree_.path()});
    check(full.exitCode == 3 && countOf(kNoSpace, full.errors) == 1, "reason");
    check(isNameFound("first.pdf") && status()["generation"] == 1, "old generation serves");
    makeRoom();
    check(vistaro({"index", "--once", tree_.path()}).exitCode == 0, "second crawl");
    check(isNameFound("second.pdf"), "found later");
    check(vistaro({"index", "--verify"}).exitCode == 0, "sound");
  });
}

TEST_F(FullDisk, SearchesAnIndexThatNobodyCanWriteTo) {
  expect([this] {
    write(tree_ / "first.txt", "forecast");
    check(vistaro({"index", "--once", tree_.path()}).exitCode == 0, "crawl");
    const auto remount = [&](unsigned long flags) {
      return mount(nullptr, indexFolder().c_str(), nullptr, MS_REMOUNT | MS_BIND | flags,
                   nullptr) == 0;
    };
    check(remount(MS_RDONLY), std::strerror(errno));
    check(isNameFound("first.txt") && isTextFound("forecast"), "found");
    write(tree_ / "second.txt", "budget");
    for (const char* how : {"--once", "--watch"}) {
      const ProgramResult refused = vistaro({"index", how, tree_.path()});
      check(refused.exitCode == 3 && countOf("Read-only file system", refused.errors) == 1, how);
    }
    check(remount(0), "writable again");
    const auto running = watcher();
    check(!running->waitForLine("looked into").empty(), "crawl again");
    checkSoon([&] { return isTextFound("budget"); }, "found later");
  });
}

TEST_F(FullDisk, FollowsADiskThatIsUnmountedAndComesBack) {
  expect([this] {
    std::filesystem::create_directories(tree_ / "disk");
    mountAt(tree_ / "disk", "tmpfs");
    addFile("disk/one.pdf");
    const auto running = watcher();
    check(!running->waitForLine("generation 1").empty(), "crawl");
    check(isNameFound("one.pdf"), "found");
    checkSoon([&] { return umount((tree_ / "disk").c_str()) == 0; }, "nobody keeps it");
    checkSoon([&] { return !isNameFound("one.pdf"); }, "gone");
    mountAt(tree_ / "disk", "tmpfs");
    addFile("disk/two.pdf");
    checkSoon([&] { return isNameFound("two.pdf"); }, "found on the disk that came");
    addFile("disk/three.pdf");
    checkSoon([&] { return isNameFound("three.pdf"); }, "watched");
  });
}

}  // namespace
}  // namespace vt
