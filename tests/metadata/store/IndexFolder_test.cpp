#include "metadata/store/IndexFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <filesystem>

#include "metadata/store/SegmentVerifier.h"
#include "metadata/store/StoredFiles.h"
#include "support/InChildProcess.h"

namespace vt {
namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAre;
using Kind = StoreError::Kind;

std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  return names;
}

IndexFolder made(const std::string& path) {
  auto folder = IndexFolder::make(path);
  if (!folder) throw std::runtime_error(folder.error().reason);
  return std::move(folder).value();
}

Manifest publish(const IndexFolder& folder, std::uint32_t seed, Manifest crawl = {}) {
  const auto lock = folder.lock();
  if (!lock) throw std::runtime_error(lock.error().reason);
  auto manifest = folder.publish(*lock, randomFiles(seed, 50).built, std::move(crawl));
  if (!manifest) throw std::runtime_error(manifest.error().reason);
  return std::move(manifest).value();
}

std::string manifestNaming(const std::vector<SegmentRecord>& segments) {
  Manifest manifest;
  manifest.generation = 2;
  manifest.segments = segments;
  return printManifest(manifest);
}

TEST(IndexFolder, IsMadeForItsOwnerAlone) {
  const TemporaryFolder place;
  const std::string path = place / "a/b/index";
  const mode_t before = ::umask(0);
  const auto folder = IndexFolder::make(path);
  ::umask(before);
  ASSERT_TRUE(folder) << folder.error().reason;
  struct stat status{};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  EXPECT_TRUE(IndexFolder::make(path));
}

TEST(IndexFolder, IsRefusedWhenOthersMayEnter) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  made(path);
  for (const mode_t mode : {0750U, 0720U, 0710U, 0704U, 0702U, 0701U, 0777U}) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    const auto folder = IndexFolder::open(path);
    ASSERT_FALSE(folder);
    EXPECT_EQ(folder.error().kind, Kind::kNotOurs);
    EXPECT_THAT(folder.error().reason, HasSubstr("which lets others in; it must have 0700"));
    EXPECT_FALSE(IndexFolder::make(path));
  }
}

TEST(IndexFolder, IsRefusedWhenSomebodyElseOwnsIt) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  made(path);
  if (::chown(path.c_str(), 12345, 12345) != 0) GTEST_SKIP() << "only root can give files away";
  const auto folder = IndexFolder::open(path);
  ASSERT_FALSE(folder);
  EXPECT_EQ(folder.error().kind, Kind::kNotOurs);
  EXPECT_EQ(folder.error().reason,
            path + " belongs to user 12345, and this process acts for user 0");
  EXPECT_EQ(inChildProcess([&] {
              if (::setgid(12345) != 0 || ::setuid(12345) != 0) return std::string("not changed");
              return IndexFolder::open(path) ? std::string("open") : std::string("refused");
            }),
            "open");
}

TEST(IndexFolder, IsRefusedToWhoMayNotEnterIt) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  made(path);
  if (::geteuid() != 0) GTEST_SKIP() << "only root can act for another";
  EXPECT_EQ(inChildProcess([&] {
              if (::setgid(12345) != 0 || ::setuid(12345) != 0) return std::string("not changed");
              const auto folder = IndexFolder::open(path);
              if (folder || folder.error().kind != Kind::kNotOurs) return std::string("let in");
              return folder.error().reason;
            }),
            "cannot open " + path + ": Permission denied");
}

TEST(IndexFolder, SaysThatThereIsNone) {
  const TemporaryFolder place;
  EXPECT_EQ(IndexFolder::open(place / "index").error().kind, Kind::kMissing);
  writeFile(place / "file", "");
  EXPECT_EQ(IndexFolder::open(place / "file").error().kind, Kind::kFailed);
  const IndexFolder folder = made(place / "index");
  EXPECT_EQ(folder.manifest().error().kind, Kind::kMissing);
  EXPECT_EQ(folder.current().error().kind, Kind::kMissing);
}

TEST(IndexFolder, GivesTheNewestGeneration) {
  const TemporaryFolder place;
  const IndexFolder folder = made(place / "index");
  const Manifest crawl{.generation = 0,
                       .segments = {},
                       .roots = {"/Data", "/\xff"},
                       .began = Date{std::chrono::seconds{5}},
                       .ended = Date{std::chrono::seconds{9}},
                       .duration = std::chrono::seconds{4},
                       .vouched = Date{std::chrono::seconds{7}}};
  for (std::uint64_t generation = 1; generation <= 3; ++generation) {
    const Manifest manifest = publish(folder, static_cast<std::uint32_t>(generation), crawl);
    EXPECT_EQ(manifest.generation, generation);
    EXPECT_EQ(manifest.roots, crawl.roots);
    const auto current = folder.current();
    ASSERT_TRUE(current) << current.error().reason;
    EXPECT_EQ(current->manifest, manifest);
    EXPECT_EQ(current->segment->generation(), generation);
    EXPECT_FALSE(verifySegment(*current->segment));
    EXPECT_THAT(filesIn(place / "index"),
                UnorderedElementsAre("lock", "manifest", "segment-" + std::to_string(generation)));
  }
}

TEST(IndexFolder, LetsAReaderKeepAnOldGeneration) {
  const TemporaryFolder place;
  const IndexFolder folder = made(place / "index");
  publish(folder, 1);
  const IndexGeneration old = folder.current().value();
  publish(folder, 2);
  EXPECT_FALSE(verifySegment(*old.segment));
  EXPECT_EQ(old.segment->columns().rowCount(), randomFiles(1, 50).files.size());
}

TEST(IndexFolder, HasOneWriterAtATime) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  const IndexFolder folder = made(path);
  {
    const auto first = folder.lock();
    ASSERT_TRUE(first) << first.error().reason;
    const std::string expected = "process " + std::to_string(::getpid()) + " is writing to " + path;
    const auto second = made(path).lock();
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().kind, Kind::kLocked);
    EXPECT_EQ(second.error().reason, expected);
    EXPECT_EQ(inChildProcess([&] {
                const auto third = IndexFolder::open(path).value().lock();
                return third ? "locked" : third.error().reason;
              }),
              expected);
  }
  EXPECT_TRUE(folder.lock());
}

TEST(IndexFolder, IsLockedByWhoCouldNotLeaveANumber) {
  const TemporaryFolder place;
  const IndexFolder folder = made(place / "index");
  const auto first = folder.lock();
  writeFile(place / "index/lock", "");
  EXPECT_EQ(folder.lock().error().reason, "another process is writing to " + (place / "index"));
}

TEST(IndexFolder, RemovesWhatKilledWritersLeft) {
  const TemporaryFolder place;
  const IndexFolder folder = made(place / "index");
  for (const char* name : {"segment-7", "segment-9.tmp", "manifest.tmp"}) {
    writeFile(place / "index/" + name, "left");
  }
  for (const char* name : {"notes", "segment-", "segment-x", "segment-7.bak"}) {
    writeFile(place / "index/" + name, "somebody's");
  }
  EXPECT_EQ(publish(folder, 1).generation, 10U) << "a name that was used is not used again";
  EXPECT_THAT(filesIn(place / "index"),
              UnorderedElementsAre("lock", "manifest", "segment-10", "notes", "segment-",
                                   "segment-x", "segment-7.bak"));
}

TEST(IndexFolder, SaysWhatIsDamagedAndIsReplaced) {
  struct Case {
    const char* what;
    void (*damage)(const std::string& folder);
    Kind kind;
    const char* reason;
  };
  const Case cases[] = {
      {"manifest cut",
       [](const std::string& folder) { std::filesystem::resize_file(folder + "/manifest", 20); },
       Kind::kDamaged, "it is not as written"},
      {"manifest empty", [](const std::string& folder) { writeFile(folder + "/manifest", ""); },
       Kind::kDamaged, "it is not as written"},
      {"segment cut",
       [](const std::string& folder) { std::filesystem::resize_file(folder + "/segment-2", 2000); },
       Kind::kDamaged, "it is not of the size that was written"},
      {"segment gone", [](const std::string& folder) { ::unlink((folder + "/segment-2").c_str()); },
       Kind::kMissing, "No such file or directory"},
      {"another segment",
       [](const std::string& folder) {
         writeFile(folder + "/segment-2", SegmentFile(randomFiles(9, 9).built, 2).bytes);
       },
       Kind::kDamaged, "it is not the one that belongs to the manifest"},
      {"no segment",
       [](const std::string& folder) { writeFile(folder + "/manifest", manifestNaming({})); },
       Kind::kDamaged, "it names no segments that belong together"},
      {"segment elsewhere",
       [](const std::string& folder) {
         writeFile(folder + "/manifest", manifestNaming({{"../x/segment-2", {}}}));
       },
       Kind::kDamaged, "it names no segments that belong together"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const TemporaryFolder place;
    const IndexFolder folder = made(place / "index");
    publish(folder, 1);
    publish(folder, 2);
    c.damage(place / "index");
    const auto current = folder.current();
    ASSERT_FALSE(current);
    EXPECT_EQ(current.error().kind, c.kind);
    EXPECT_THAT(current.error().reason, HasSubstr(c.reason));
    EXPECT_THAT(current.error().reason, HasSubstr(place / "index"));
    EXPECT_EQ(publish(folder, 3).generation, 3U);
    ASSERT_TRUE(folder.current());
    EXPECT_THAT(filesIn(place / "index"), UnorderedElementsAre("lock", "manifest", "segment-3"));
  }
}

TEST(IndexFolder, SaysThatItMayOnlyBeRead) {
  const TemporaryFolder place;
  const std::string path = place / "index";
  publish(made(path), 1);
  if (::mount(path.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) != 0) {
    GTEST_SKIP() << "only root can mount a folder for reading";
  }
  ASSERT_EQ(::mount(nullptr, path.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
  {
    const IndexFolder folder = made(path);
    const auto lock = folder.lock();
    EXPECT_FALSE(lock);
    EXPECT_EQ(lock.error().kind, Kind::kReadOnly);
    EXPECT_EQ(lock.error().reason, "cannot open " + path + "/lock: Read-only file system");
    EXPECT_TRUE(folder.current());
  }
  ASSERT_EQ(::umount(path.c_str()), 0);
}

}  // namespace
}  // namespace vt
