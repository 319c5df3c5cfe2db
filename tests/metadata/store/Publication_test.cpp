// What is left of an index when its disk is full, its writer is killed, or any of its system calls
// fails.

#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <optional>
#include <random>

#include "metadata/store/FaultyCalls.h"
#include "metadata/store/IndexFolder.h"
#include "metadata/store/SegmentVerifier.h"
#include "metadata/store/StoredFiles.h"

namespace vt {
namespace {

using testing::HasSubstr;
using Kind = StoreError::Kind;

std::size_t countFiles(const std::string& folder) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

TEST(Publication, LeavesTheOldGenerationWhicheverCallFails) {
  struct Case {
    int error;
    Kind kind;
    const char* reason;
  };
  const Case cases[] = {
      {EIO, Kind::kFailed, "Input/output error"},
      {ENOSPC, Kind::kNoSpace, "No space left on device"},
      {EDQUOT, Kind::kNoSpace, "Disk quota exceeded"},
      {EROFS, Kind::kReadOnly, "Read-only file system"},
  };
  const StoredFiles first = randomFiles(1, 50);
  const StoredFiles second = randomFiles(2, 6000);
  for (const Case& c : cases) {
    bool isDone = false;
    int failures = 0;
    for (int at = 0; !isDone; ++at) {
      SCOPED_TRACE(testing::Message() << c.reason << " at call " << at);
      const TemporaryFolder place;
      FailingCalls calls;
      const IndexFolder folder = IndexFolder::make(place / "index", calls).value();
      const auto lock = folder.lock();
      ASSERT_TRUE(lock);
      const Manifest old = folder.publish(*lock, first.built, {}).value();
      calls.calls = 0;
      calls.failsAt = at;
      calls.error = c.error;
      calls.writesHalf = at % 2 == 0;
      const auto published = folder.publish(*lock, second.built, {});
      isDone = published.hasValue();
      const bool wasLastSync = calls.failed == std::string("sync") && calls.calls == at + 1 &&
                               folder.manifest()->generation == 2;
      if (!isDone) {
        ++failures;
        EXPECT_EQ(published.error().kind, c.kind);
        EXPECT_THAT(published.error().reason, HasSubstr(c.reason));
        EXPECT_THAT(published.error().reason, HasSubstr(place / "index"));
      }
      const auto current = folder.current();
      ASSERT_TRUE(current) << current.error().reason;
      EXPECT_EQ(current->manifest.generation, isDone || wasLastSync ? 2U : 1U);
      const auto damage = verifySegment(*current->segment);
      EXPECT_FALSE(damage) << damage->reason;
      // Lock, manifest and segment; the old segment too when the new one may still be lost.
      EXPECT_EQ(countFiles(place / "index"), wasLastSync ? 4U : 3U);
      // And the next one comes through.
      calls.failsAt.reset();
      EXPECT_TRUE(folder.publish(*lock, first.built, {}));
      EXPECT_EQ(countFiles(place / "index"), 3U);
    }
    // Two files made, synced and renamed, the folder synced twice, and several writes.
    EXPECT_GE(failures, 11);
  }
}

TEST(Publication, TakesNoMoreSpaceThanItHasBytes) {
  const TemporaryFolder place;
  const IndexFolder folder = IndexFolder::make(place / "index").value();
  ASSERT_TRUE(folder.publish(*folder.lock(), randomFiles(1, 6000).built, {}));
  struct stat status{};
  ASSERT_EQ(stat((place / "index/segment-1").c_str(), &status), 0);
  ASSERT_GT(status.st_size, 1 << 18) << "the segment is too small to say anything";
  EXPECT_LE(status.st_blocks * 512, status.st_size + (1 << 16));
}

TEST(Publication, NeedsNoSpaceSetAside) {
  class NoReserve final : public StoreCalls {
   public:
    int reserve(int, std::uint64_t, std::uint64_t) override {
      errno = EOPNOTSUPP;
      return -1;
    }
  } calls;
  const TemporaryFolder place;
  const IndexFolder folder = IndexFolder::make(place / "index", calls).value();
  ASSERT_TRUE(folder.publish(*folder.lock(), randomFiles(1, 6000).built, {}));
  EXPECT_FALSE(verifySegment(*folder.current()->segment));
}

TEST(Publication, GoesOnAfterAnInterruptedWrite) {
  const TemporaryFolder place;
  for (int at = 0; at < 6; ++at) {
    SCOPED_TRACE(at);
    FailingCalls calls;
    calls.failsAt = at;
    calls.error = EINTR;
    const IndexFolder folder = IndexFolder::make(place / "index", calls).value();
    const auto published = folder.publish(*folder.lock(), randomFiles(1, 200).built, {});
    EXPECT_EQ(published.hasValue(), calls.failed == std::string("write"));
  }
}

TEST(Publication, LeavesTheOldGenerationOnAFullDisk) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  ASSERT_EQ(::mkdir(path.c_str(), 0700), 0);
  if (::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=600k,mode=0700") != 0) {
    GTEST_SKIP() << "only root can mount a small file system";
  }
  {
    const IndexFolder folder = IndexFolder::open(path).value();
    const auto lock = folder.lock();
    ASSERT_TRUE(lock);
    ASSERT_TRUE(folder.publish(*lock, randomFiles(1, 300).built, {}));
    const auto published = folder.publish(*lock, randomFiles(2, 8000).built, {});
    ASSERT_FALSE(published);
    EXPECT_EQ(published.error().kind, Kind::kNoSpace);
    EXPECT_THAT(published.error().reason, HasSubstr("No space left on device"));
    EXPECT_EQ(countFiles(path), 3U);
    const auto current = folder.current();
    ASSERT_TRUE(current) << current.error().reason;
    EXPECT_EQ(current->manifest.generation, 1U);
    EXPECT_FALSE(verifySegment(*current->segment));
    EXPECT_TRUE(folder.publish(*lock, randomFiles(3, 300).built, {}));
  }
  EXPECT_EQ(::umount2(path.c_str(), MNT_DETACH), 0);
}

TEST(Publication, LeavesTheOldGenerationWhenThereIsTooMuch) {
  const TemporaryFolder place;
  const IndexFolder folder = IndexFolder::make(place / "index").value();
  const auto lock = folder.lock();
  ASSERT_TRUE(folder.publish(*lock, randomFiles(1, 30).built, {}));
  SegmentBuilder tooMuch(storedTypes(), {.rows = 0});
  tooMuch.addFolder(kNoFolder, "", tooMuch.addClass({}, AclPresence::kNone, {}));
  ASSERT_FALSE(tooMuch.addRow({.name = "a", .status = {}, .folder = 0}));
  const auto published = folder.publish(*lock, tooMuch, {});
  ASSERT_FALSE(published);
  EXPECT_EQ(published.error().kind, Kind::kTooLarge);
  EXPECT_EQ(countFiles(place / "index"), 3U);
  EXPECT_EQ(folder.current()->manifest.generation, 1U);
}

[[noreturn]] void publishForEver(const std::string& path, const SegmentBuilder& even,
                                 const SegmentBuilder& odd) {
  FastCalls calls;
  const IndexFolder folder = IndexFolder::open(path, calls).value();
  const auto lock = folder.lock();
  if (!lock) ::_exit(1);
  for (int round = 0;; ++round) {
    if (!folder.publish(*lock, round % 2 == 0 ? even : odd, {})) ::_exit(2);
  }
}

TEST(Publication, HidesNothingFromReadersMeanwhile) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  const StoredFiles even = randomFiles(1, 20);
  const StoredFiles odd = randomFiles(2, 30);
  const IndexFolder folder = IndexFolder::make(path).value();
  ASSERT_TRUE(folder.publish(*folder.lock(), even.built, {}));
  const pid_t writer = ::fork();
  ASSERT_GE(writer, 0);
  if (writer == 0) publishForEver(path, even.built, odd.built);
  std::uint64_t generation = 1;
  std::string failure;
  for (int looks = 0; (looks < 2000 || generation < 100) && failure.empty(); ++looks) {
    const auto current = folder.current();
    if (!current) {
      failure = current.error().reason;
    } else if (current->manifest.generation < generation || verifySegment(*current->segment)) {
      failure = "not what was published";
    } else {
      generation = current->manifest.generation;
    }
  }
  ::kill(writer, SIGKILL);
  ASSERT_EQ(::waitpid(writer, nullptr, 0), writer);
  EXPECT_EQ(failure, "");
}

TEST(Publication, LeavesOneWholeGenerationWheneverItsWriterIsKilled) {
  constexpr int kKills = 200;
  constexpr unsigned kSeed = 20261121;
  const TemporaryFolder place;
  const std::string path = place / "index";
  const StoredFiles even = randomFiles(1, 200);
  const StoredFiles odd = randomFiles(2, 300);
  // As long as a few publications take, on whatever machine and however it is built.
  std::chrono::nanoseconds longest = std::chrono::milliseconds(6);
  {
    FastCalls calls;
    const IndexFolder folder = IndexFolder::make(path, calls).value();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(folder.publish(*folder.lock(), even.built, {}));
    longest =
        std::max<std::chrono::nanoseconds>(longest, 4 * (std::chrono::steady_clock::now() - start));
  }
  std::mt19937 random(kSeed);
  std::uniform_int_distribution<long> nanoseconds(0, longest.count());
  int killedInOne = 0;
  int killedAfterOne = 0;
  std::uint64_t generation = 1;
  for (int kill = 0; kill < kKills; ++kill) {
    SCOPED_TRACE(testing::Message() << "kill " << kill << ", seed " << kSeed);
    const pid_t writer = ::fork();
    ASSERT_GE(writer, 0);
    if (writer == 0) publishForEver(path, even.built, odd.built);
    const timespec moment{0, nanoseconds(random)};
    ::nanosleep(&moment, nullptr);
    ASSERT_EQ(::kill(writer, SIGKILL), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    ASSERT_TRUE(WIFSIGNALED(status)) << "ended by itself with " << WEXITSTATUS(status);
    const auto current = IndexFolder::open(path)->current();
    ASSERT_TRUE(current) << current.error().reason;
    ASSERT_GE(current->manifest.generation, generation);
    killedAfterOne += current->manifest.generation > generation ? 1 : 0;
    generation = current->manifest.generation;
    const auto damage = verifySegment(*current->segment);
    ASSERT_FALSE(damage) << damage->reason;
    const std::size_t rows = current->segment->columns().rowCount();
    ASSERT_TRUE(rows == even.files.size() || rows == odd.files.size());
    killedInOne += countFiles(path) > 3 ? 1 : 0;
  }
  EXPECT_GT(killedInOne, kKills / 10) << "hardly a publication was under way when it was killed";
  EXPECT_GT(killedAfterOne, kKills / 10) << "hardly one came to its end";
}

}  // namespace
}  // namespace vt
