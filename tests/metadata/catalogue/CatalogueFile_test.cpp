#include "metadata/catalogue/CatalogueFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "support/ReadFile.h"

namespace vt {
namespace {

using Kind = StoreError::Kind;

TEST(CatalogueFile, IsForItsOwnerAloneWithAllThatLiesBesideIt) {
  const CatalogueInFolder folder;
  const auto writer = folder.writer();
  throwIf(writer->commit());
  valueOrThrow(writer->add(CatalogueInFolder::recordOf(1), textAlone("word")));
  throwIf(writer->commit());
  for (const char* suffix : {"", "-wal", "-shm"}) {
    SCOPED_TRACE(suffix);
    struct stat status{};
    ASSERT_EQ(stat((folder.file() + suffix).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
  }
}

TEST(CatalogueFile, IsMissingForReadersBeforeItWasMade) {
  const TemporaryFolder folder;
  const auto reader = CatalogueReader::open(folder.path());
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error().kind, Kind::kMissing);
}

TEST(CatalogueFile, IsOpenedAgainAsItWasLeft) {
  const CatalogueInFolder folder;
  for (std::uint64_t inode = 1; inode < 4; ++inode) {
    const auto writer = folder.writer();
    EXPECT_EQ(valueOrThrow(writer->add(CatalogueInFolder::recordOf(inode), textAlone("word"))),
              inode);
    throwIf(writer->commit());
  }
  EXPECT_EQ(valueOrThrow(folder.reader()->counts()).contents, 3U);
}

TEST(CatalogueFile, IsRefusedWhenItIsAnotherProgramsOrOfAnotherVersion) {
  for (const char* change :
       {"PRAGMA application_id = 1", "PRAGMA user_version = 99", "PRAGMA user_version = 2",
        "PRAGMA user_version = 0", "PRAGMA user_version = -1"}) {
    SCOPED_TRACE(change);
    const CatalogueInFolder folder;
    folder.writer();
    throwIf(valueOrThrow(Database::openForWriting(folder.file())).execute(change));
    const auto writer = CatalogueWriter::open(folder.path());
    ASSERT_FALSE(writer);
    EXPECT_EQ(writer.error().kind, Kind::kOtherKind) << writer.error().reason;
    const auto reader = CatalogueReader::open(folder.path());
    ASSERT_FALSE(reader);
    EXPECT_EQ(reader.error().kind, Kind::kOtherKind) << reader.error().reason;
  }
}

TEST(CatalogueFile, IsDamagedWhenItIsNoDatabase) {
  const CatalogueInFolder folder;
  writeFile(folder.file(), std::string(10'000, 'x'));
  const auto writer = CatalogueWriter::open(folder.path());
  ASSERT_FALSE(writer);
  EXPECT_EQ(writer.error().kind, Kind::kDamaged) << writer.error().reason;
  const auto reader = CatalogueReader::open(folder.path());
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error().kind, Kind::kDamaged) << reader.error().reason;
}

TEST(CatalogueFile, IsMadeAnewOnceItWasRemovedWhileReadersGoOn) {
  const CatalogueInFolder folder;
  {
    const auto writer = folder.writer();
    valueOrThrow(writer->add(CatalogueInFolder::recordOf(1), textAlone("word")));
    throwIf(writer->commit());
  }
  const auto reader = folder.reader();
  ASSERT_FALSE(removeCatalogue(folder.path()));
  const auto writer = folder.writer();
  EXPECT_EQ(valueOrThrow(reader->counts()).contents, 1U);
  EXPECT_EQ(valueOrThrow(folder.reader()->counts()).contents, 0U);
  EXPECT_FALSE(removeCatalogue(folder.path()));
  EXPECT_FALSE(removeCatalogue(folder.path()));  // nothing is there any more
}

}  // namespace
}  // namespace vt
