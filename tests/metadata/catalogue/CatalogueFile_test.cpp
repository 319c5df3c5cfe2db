#include "metadata/catalogue/CatalogueFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "metadata/catalogue/CatalogueInFolder.h"
#include "metadata/text/ContentTokenizer.h"
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

TEST(CatalogueFile, IsRefusedWhenItIsAnotherProgramsOrOfALaterVersion) {
  for (const char* change : {"PRAGMA application_id = 1", "PRAGMA user_version = 99",
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

// Makes the catalogue one of that earlier version, but for the checksums that it did not have.
void makeEarlier(const std::string& file, int version) {
  const Database database = valueOrThrow(Database::openForWriting(file));
  throwIf(addContentTokenizer(database));
  throwIf(
      database.execute("DROP TABLE text_place; DROP TABLE word; DROP TABLE text;"
                       "CREATE VIRTUAL TABLE text USING fts5(words, content='', columnsize=0,"
                       "  detail=full, tokenize='vistaro');"
                       "PRAGMA user_version = 2"));
  if (version > 1) return;
  throwIf(
      database.execute("ALTER TABLE content DROP COLUMN attributes_changed;"
                       "DROP TABLE attributes_seen; PRAGMA user_version = 1"));
}

TEST(CatalogueFile, IsBroughtUpToThisVersionWithAllButItsTexts) {
  for (const int version : {1, 2}) {
    SCOPED_TRACE(version);
    const CatalogueInFolder folder;
    {
      const auto writer = folder.writer();
      Extraction picture;
      picture.attributes["kMDItemPixelWidth"] = std::int64_t{640};
      ContentRecord record = CatalogueInFolder::recordOf(1);
      record.version.attributesChanged = 5;
      valueOrThrow(writer->add(record, picture));
      valueOrThrow(writer->add(CatalogueInFolder::recordOf(2), textAlone("word")));
      throwIf(writer->commit());
    }
    makeEarlier(folder.file(), version);
    const auto early = CatalogueReader::open(folder.path());
    ASSERT_FALSE(early);
    EXPECT_EQ(early.error().kind, Kind::kOtherKind);

    std::vector<ContentRecord> found;
    const auto writer = folder.writer();
    throwIf(writer->forEach([&](const ContentRecord& record) { found.push_back(record); }));
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].extractorVersion, CatalogueInFolder::recordOf(1).extractorVersion);
    EXPECT_EQ(found[0].version, (ContentVersion{1'000'000, 10, version == 1 ? 0 : 5}));
    EXPECT_EQ(found[1].extractorVersion, 0U) << "to be looked into again";
    const auto words = [&] {
      return valueOrThrow(folder.reader()->withWords(contentQueryOf("word", 0), 9)).count();
    };
    EXPECT_EQ(words(), 0U);
    valueOrThrow(writer->add(CatalogueInFolder::recordOf(2), textAlone("word")));
    throwIf(writer->commit());
    EXPECT_EQ(words(), 1U);
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
