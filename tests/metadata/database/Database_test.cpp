#include "metadata/database/Database.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <utility>

#include "metadata/database/DatabaseLocks.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {
namespace {

using Kind = StoreError::Kind;

class DatabaseTest : public testing::Test {
 protected:
  Database database() {
    Result<Database, StoreError> opened = Database::openForWriting(path_);
    EXPECT_TRUE(opened) << opened.error().reason;
    return std::move(opened).value();
  }

  TemporaryFolder folder_;
  std::string path_ = folder_ / "a%20b?c#d";  // what a URI would take for something else
};

TEST_F(DatabaseTest, IsMadeForItsOwnerAlone) {
  EXPECT_FALSE(database().execute("PRAGMA journal_mode = WAL; CREATE TABLE t(n)"));
  struct stat status{};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(DatabaseTest, GivesBackWhatWasBound) {
  const Database database = this->database();
  ASSERT_FALSE(database.execute("CREATE TABLE t(number, text, bytes, absent)"));
  Statement adding = database.prepare("INSERT INTO t VALUES(?, ?, ?, ?)").value();
  const std::string bytes("\0\xFF", 2);
  ASSERT_FALSE(
      adding.bind(1, std::int64_t{-7}).bind(2, "Größe").bindBytes(3, bytes).bindNull(4).run());
  Statement asking = database.prepare("SELECT * FROM t").value();
  ASSERT_TRUE(asking.next());
  EXPECT_EQ(asking.number(0), -7);
  EXPECT_EQ(asking.bytes(1), "Größe");
  EXPECT_EQ(asking.bytes(2), bytes);
  EXPECT_TRUE(asking.isNull(3));
  EXPECT_FALSE(asking.next());
  EXPECT_FALSE(asking.finish());
}

TEST_F(DatabaseTest, UndoesWhatIsNotCommitted) {
  const Database database = this->database();
  ASSERT_FALSE(database.execute("CREATE TABLE t(n)"));
  {
    const Transaction transaction(database);
    ASSERT_FALSE(transaction.error());
    ASSERT_FALSE(database.execute("INSERT INTO t VALUES(1)"));
  }
  EXPECT_EQ(database.number("SELECT count(*) FROM t").value(), 0);
  Transaction transaction(database);
  ASSERT_FALSE(database.execute("INSERT INTO t VALUES(1)"));
  ASSERT_FALSE(transaction.commit());
  EXPECT_EQ(database.number("SELECT count(*) FROM t").value(), 1);
}

TEST_F(DatabaseTest, CannotBeReadBeforeItIsThere) {
  const Result<Database, StoreError> opened = Database::openForReading(path_);
  ASSERT_FALSE(opened);
  EXPECT_EQ(opened.error().kind, Kind::kMissing);
}

TEST_F(DatabaseTest, IsDamagedWhenItIsNoDatabase) {
  writeFile(path_, std::string(5000, 'x'));
  const Result<std::int64_t, StoreError> number =
      Database::openForReading(path_).value().number("SELECT count(*) FROM sqlite_schema");
  ASSERT_FALSE(number);
  EXPECT_EQ(number.error().kind, Kind::kDamaged);
  EXPECT_NE(number.error().reason.find(path_), std::string::npos) << number.error().reason;
}

TEST_F(DatabaseTest, IsNotLookedForBehindALink) {
  writeFile(folder_ / "elsewhere", "");
  ASSERT_EQ(symlink("elsewhere", path_.c_str()), 0);
  EXPECT_FALSE(Database::openForWriting(path_));
  EXPECT_FALSE(Database::openForReading(path_));
}

TEST_F(DatabaseTest, SaysWhenThereIsNoRoom) {
  const Database database = this->database();
  ASSERT_FALSE(database.execute("CREATE TABLE t(n); PRAGMA max_page_count = 3"));
  const StoreFailure failure = database.execute("INSERT INTO t VALUES(zeroblob(100000))");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->kind, Kind::kNoSpace);
}

TEST_F(DatabaseTest, StaysLockedWhenItIsOpenedAgain) {
  const Database first = database();
  ASSERT_FALSE(first.execute("PRAGMA journal_mode = WAL; CREATE TABLE t(n)"));
  ASSERT_TRUE(isLockedHere(path_));
  {
    const Database again = database();
    EXPECT_EQ(again.number("SELECT count(*) FROM t").value(), 0);
    EXPECT_TRUE(isLockedHere(path_));
  }
  EXPECT_TRUE(isLockedHere(path_));
}

TEST_F(DatabaseTest, LetsAReaderLookAtOneMomentWhileAnotherWrites) {
  const Database writer = database();
  ASSERT_FALSE(writer.execute("PRAGMA journal_mode = WAL; CREATE TABLE t(n)"));
  const Database reader = Database::openForReading(path_).value();
  const Transaction moment(reader, /*isForWriting=*/false);
  ASSERT_EQ(reader.number("SELECT count(*) FROM t").value(), 0);
  ASSERT_FALSE(writer.execute("INSERT INTO t VALUES(1)"));
  EXPECT_EQ(reader.number("SELECT count(*) FROM t").value(), 0);
  EXPECT_TRUE(reader.execute("INSERT INTO t VALUES(2)"));  // refused
}

}  // namespace
}  // namespace vt
