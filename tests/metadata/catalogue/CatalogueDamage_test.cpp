#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

constexpr std::uint32_t kSeed = 20261121;
constexpr int kRounds = 400;

/// Asks for everything; what comes is all the same as long as it ends.
void askAll(CatalogueReader& reader) {
  const ContentNumber end = 300;
  static_cast<void>(reader.lookAnew());
  static_cast<void>(reader.rowsOf({1, 2}, 3));
  static_cast<void>(reader.end());
  static_cast<void>(reader.withText(end));
  for (const char* pattern : {"word*", "some words", "other", "*o?d*", "s?me *r*"}) {
    static_cast<void>(reader.withWords(contentQueryOf(pattern, 0), end));
  }
  static_cast<void>(reader.withAttribute("kMDItemTitle", end, [](const Value&) { return true; }));
  static_cast<void>(reader.attribute(3, "kMDItemTitle"));
  static_cast<void>(reader.attributeNames());
  static_cast<void>(reader.counts());
  static_cast<void>(reader.failures(10));
}

std::string soundCatalogue() {
  const CatalogueInFolder folder;
  {
    const auto writer = folder.writer();
    for (std::uint64_t inode = 1; inode <= 200; ++inode) {
      Extraction extraction = textAlone("some words " + std::to_string(inode));
      extraction.attributes["kMDItemTitle"] = "Title " + std::to_string(inode);
      valueOrThrow(writer->add(CatalogueInFolder::recordOf(inode), extraction));
    }
    throwIf(writer->setRows({1, 2}, std::vector<ContentNumber>{1, 2, 3}));
    throwIf(writer->mergeText());
  }
  return readFile(folder.file());  // the log went with the last connection
}

TEST(CatalogueDamage, OfAnyByteGivesAnErrorOrWrongAnswersAtWorst) {
  const std::string sound = soundCatalogue();
  ASSERT_GT(sound.size(), 10'000U);
  std::mt19937 random(kSeed);
  int refused = 0;
  for (int round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", round " << round);
    std::string damaged = sound;
    for (std::uint32_t left = 1 + random() % 8; left > 0; --left) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    if (random() % 4 == 0) damaged.resize(random() % damaged.size());
    if (damaged == sound) continue;
    const CatalogueInFolder folder;
    writeFile(folder.file(), damaged);
    const auto reader = CatalogueReader::open(folder.path());
    if (reader) {
      askAll(**reader);
      EXPECT_TRUE((*reader)->check()) << "what has changed is not what was written";
    } else {
      ++refused;
    }
  }
  EXPECT_LT(refused, kRounds);
}

TEST(CatalogueDamage, IsNotedByTheCheck) {
  const CatalogueInFolder folder;
  std::string damaged = soundCatalogue();
  for (std::size_t at = 8192; at < damaged.size(); at += 8192) damaged[at] ^= 0x55;  // each page
  writeFile(folder.file(), damaged);
  const auto reader = CatalogueReader::open(folder.path());
  ASSERT_TRUE(!reader || (*reader)->check());
}

/// Adds texts without end, and says of each commit how many there are by then.
[[noreturn]] void addForEver(const CatalogueInFolder& folder, int tellTo) {
  const auto writer = folder.writer();
  for (std::uint32_t added = 0;;) {
    for (int i = 0; i < 7; ++i) {
      valueOrThrow(writer->add(CatalogueInFolder::recordOf(++added), textAlone("some words")));
    }
    throwIf(writer->commit());
    if (write(tellTo, &added, sizeof added) != sizeof added) _exit(1);
  }
}

TEST(CatalogueDamage, IsNotDoneByKillingTheWriter) {
  std::mt19937 random(kSeed);
  for (int round = 0; round < 30; ++round) {
    SCOPED_TRACE(testing::Message() << "seed " << kSeed << ", round " << round);
    const CatalogueInFolder folder;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) addForEver(folder, ends[1]);
    close(ends[1]);
    std::uint32_t told = 0;
    for (std::uint32_t commits = 1 + random() % 20; commits > 0; --commits) {
      ASSERT_EQ(read(ends[0], &told, sizeof told), static_cast<ssize_t>(sizeof told));
    }
    for (std::uint32_t turns = random() % 2000; turns > 0; --turns) sched_yield();
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    while (read(ends[0], &told, sizeof told) > 0) {  // what was committed meanwhile
    }
    close(ends[0]);

    const auto writer = folder.writer();
    EXPECT_FALSE(writer->checkText());
    const auto reader = folder.reader();
    EXPECT_FALSE(reader->check());
    const std::uint64_t contents = valueOrThrow(reader->counts()).contents;
    EXPECT_GE(contents, told);
    EXPECT_EQ(contents % 7, 0U) << "a commit is whole or not at all";
    const auto found = reader->withWords(contentQueryOf("words", 0), valueOrThrow(reader->end()));
    EXPECT_EQ(found->count(), contents);
  }
}

}  // namespace
}  // namespace vt
