#include "metadata/database/PageChecksums.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "metadata/database/DatabaseLocks.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using Kind = StoreError::Kind;

constexpr std::size_t kPageSize = 512;
constexpr const char* kNumbers =
    "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100)";
constexpr std::int64_t kSum = 5050;  // of 1 to 100

class PageChecksumsTest : public testing::Test {
 protected:
  Database open(const std::string& path) const {
    Result<Database, StoreError> opened = Database::openForWriting(path);
    EXPECT_TRUE(opened) << opened.error().reason;
    return std::move(opened).value();
  }
  Database emptyDatabase() const {
    Database database = open(path_);
    EXPECT_FALSE(database.execute("PRAGMA page_size = 512"));
    return database;
  }
  static void fill(const Database& database) {
    const std::string table = std::string("CREATE TABLE t(n, padding); INSERT INTO t ") + kNumbers +
                              " SELECT i, 'some more of it' FROM n";
    ASSERT_FALSE(database.execute(table.c_str()));
  }
  void makeWithChecksums() const {
    const Database database = emptyDatabase();
    ASSERT_FALSE(database.keepChecksums());
    fill(database);
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "database";
};

TEST_F(PageChecksumsTest, LeaveTheDatabaseAsItIs) {
  makeWithChecksums();
  EXPECT_FALSE(checkPages(path_));
  const Database database = open(path_);
  EXPECT_EQ(database.number("SELECT sum(n) FROM t").value(), kSum);
  EXPECT_EQ(database.number("PRAGMA page_size").value(), static_cast<std::int64_t>(kPageSize));
}

TEST_F(PageChecksumsTest, TellAnyByteThatHasChanged) {
  makeWithChecksums();
  const std::string sound = readFile(path_);
  ASSERT_GT(sound.size(), 6 * kPageSize);
  const std::string other = folder_ / "other";
  for (std::size_t at = 0; at < sound.size(); at += at < 100 ? 1 : 7) {
    std::string damaged = sound;
    damaged[at] = static_cast<char>(damaged[at] ^ (1 << (at % 8)));
    writeFile(other, damaged);
    const StoreFailure failure = checkPages(other);
    if (failure) {
      EXPECT_EQ(failure->kind, Kind::kDamaged);
      continue;
    }
    // By these bytes it is no database any more, or none with checksums.
    EXPECT_TRUE(at == 16 || at == 17 || at == 20) << "byte " << at;
    const Database opened = open(other);
    const bool isRead = opened.number("SELECT sum(n) FROM t").hasValue();
    EXPECT_FALSE(isRead && opened.hasChecksums().value()) << "byte " << at;
  }
}

TEST_F(PageChecksumsTest, NeverLetAnOtherNumberBeRead) {
  makeWithChecksums();
  const std::string sound = readFile(path_);
  const std::string other = folder_ / "other";
  std::size_t damages = 0;
  // Behind the head, in which there are bytes that SQLite reads before the page.
  for (std::size_t at = 100; at < sound.size(); at += 11) {
    std::string damaged = sound;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    writeFile(other, damaged);
    const auto sum = open(other).number("SELECT sum(n) FROM t WHERE padding LIKE 'some%'");
    if (sum) {
      EXPECT_EQ(*sum, kSum) << "byte " << at;
    } else {
      ++damages;
      EXPECT_EQ(sum.error().kind, Kind::kDamaged) << sum.error().reason;
    }
  }
  EXPECT_GT(damages, 200U);
}

TEST_F(PageChecksumsTest, TellPagesThatHaveChangedPlaces) {
  makeWithChecksums();
  std::string bytes = readFile(path_);
  const std::string third = bytes.substr(2 * kPageSize, kPageSize);
  bytes.replace(2 * kPageSize, kPageSize, bytes.substr(3 * kPageSize, kPageSize));
  bytes.replace(3 * kPageSize, kPageSize, third);
  writeFile(path_, bytes);
  const StoreFailure failure = checkPages(path_);
  ASSERT_TRUE(failure);
  EXPECT_NE(failure->reason.find("page 3 is not what was written"), std::string::npos)
      << failure->reason;
}

TEST_F(PageChecksumsTest, TellAFileThatIsCutOff) {
  makeWithChecksums();
  std::string bytes = readFile(path_);
  bytes.resize(bytes.size() - 1);
  writeFile(path_, bytes);
  EXPECT_TRUE(checkPages(path_));
}

TEST_F(PageChecksumsTest, AreKeptWhenTheLogIsTakenOver) {
  {
    const Database database = emptyDatabase();
    ASSERT_FALSE(database.keepChecksums());
    ASSERT_FALSE(database.execute("PRAGMA journal_mode = WAL"));
    fill(database);
    EXPECT_FALSE(checkPages(path_));  // nearly all is in the log
    const Database reader = open(path_);
    EXPECT_EQ(reader.number("SELECT sum(n) FROM t").value(), kSum);
    ASSERT_FALSE(database.execute("PRAGMA wal_checkpoint(TRUNCATE)"));
    EXPECT_FALSE(checkPages(path_));
    EXPECT_EQ(reader.number("SELECT sum(n) FROM t").value(), kSum);
  }
  EXPECT_GT(readFile(path_).size(), 6 * kPageSize);
  EXPECT_FALSE(checkPages(path_));
}

TEST_F(PageChecksumsTest, ComeWithVacuumToADatabaseOfBefore) {
  const Database database = emptyDatabase();
  ASSERT_FALSE(database.execute("PRAGMA journal_mode = WAL"));
  fill(database);
  ASSERT_FALSE(database.execute("PRAGMA wal_checkpoint(TRUNCATE)"));
  EXPECT_FALSE(open(path_).hasChecksums().value());
  EXPECT_EQ(database.number("SELECT sum(n) FROM t").value(), kSum);

  ASSERT_FALSE(database.keepChecksums());
  ASSERT_FALSE(database.execute("VACUUM; PRAGMA wal_checkpoint(TRUNCATE)"));
  EXPECT_FALSE(checkPages(path_));
  const Database vacuumed = open(path_);
  EXPECT_EQ(vacuumed.number("SELECT sum(n) FROM t").value(), kSum);
  EXPECT_TRUE(vacuumed.hasChecksums().value());
}

TEST_F(PageChecksumsTest, AreLookedAtWithoutTakingLocksAway) {
  const Database database = emptyDatabase();
  ASSERT_FALSE(database.keepChecksums());
  ASSERT_FALSE(database.execute("PRAGMA journal_mode = WAL"));
  fill(database);
  ASSERT_TRUE(isLockedHere(path_));
  EXPECT_FALSE(checkPages(path_));
  EXPECT_TRUE(isLockedHere(path_));
}

TEST_F(PageChecksumsTest, TellWhatCannotBeRead) {
  const StoreFailure missing = checkPages(folder_ / "missing");
  ASSERT_TRUE(missing);
  EXPECT_EQ(missing->kind, Kind::kMissing);
}

}  // namespace
}  // namespace vt
