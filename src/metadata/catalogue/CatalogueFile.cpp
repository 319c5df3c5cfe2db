#include "metadata/catalogue/CatalogueFile.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

#include "metadata/text/ContentTokenizer.h"
#include "metadata/text/TextIndex.h"

namespace vt {
namespace {

constexpr int kNewestVersion = 3;
constexpr std::int64_t kApplication = 0x56'54'43'61;  // "VTCa"

std::string schema() {
  return fmt::format(R"(
    CREATE TABLE content(
      number INTEGER PRIMARY KEY AUTOINCREMENT,
      device INTEGER NOT NULL,
      inode INTEGER NOT NULL,
      modified INTEGER NOT NULL,
      size INTEGER NOT NULL,
      extractor TEXT NOT NULL,
      extractor_version INTEGER NOT NULL,
      has_text INTEGER NOT NULL,
      failure INTEGER,
      reason TEXT,
      path BLOB,
      attributes_changed INTEGER NOT NULL DEFAULT 0,
      UNIQUE(device, inode));
    CREATE TABLE attributes_seen(segment INTEGER PRIMARY KEY);
    CREATE TABLE attribute_name(
      id INTEGER PRIMARY KEY,
      name TEXT NOT NULL UNIQUE);
    CREATE TABLE attribute(
      name INTEGER NOT NULL,
      content INTEGER NOT NULL,
      value BLOB NOT NULL,
      PRIMARY KEY(name, content)) WITHOUT ROWID;
    CREATE INDEX attribute_of_content ON attribute(content);
    CREATE TABLE segment_rows(
      segment INTEGER PRIMARY KEY,
      contents BLOB NOT NULL);
    {};
    -- Pages of that table as large as those of the file take.
    INSERT INTO text(text, rank) VALUES('pgsz', 8100);
    -- What so many bytes of terms take is gathered in memory before it is written.
    INSERT INTO text(text, rank) VALUES('hashsize', 16777216);
  )",
                     TextIndex::schema());
}

struct Marks {
  std::int64_t application = 0;
  std::int64_t version = 0;
  std::int64_t objects = 0;  // tables and the like
};

Result<Marks, StoreError> marksOf(const Database& database) {
  const auto application = database.number("PRAGMA application_id");
  if (!application) return application.error();
  const auto version = database.number("PRAGMA user_version");
  if (!version) return version.error();
  const auto objects = database.number("SELECT count(*) FROM sqlite_schema");
  if (!objects) return objects.error();
  return Marks{*application, *version, *objects};
}

// The terms of texts are others in each version, so those of before are of no use.
bool isForeign(const Marks& marks) {
  return marks.application != kApplication || marks.version != kNewestVersion;
}

StoreError foreign(const Database& database, const Marks& marks) {
  return {StoreError::Kind::kOtherKind,
          marks.application == kApplication
              ? fmt::format("{} is of version {}, and this program knows version {}",
                            database.path(), marks.version, newestCatalogueVersion())
              : fmt::format("{} is no catalogue of an index", database.path())};
}

StoreFailure make(const Database& database) {
  Transaction transaction(database);
  if (StoreFailure failure = database.execute(schema().c_str())) return failure;
  const std::string marks = fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {}",
                                        kApplication, kNewestVersion);
  if (StoreFailure failure = database.execute(marks.c_str())) return failure;
  return transaction.commit();
}

std::string pathIn(const std::string& indexFolder) { return indexFolder + "/" + kCatalogueName; }

}  // namespace

int newestCatalogueVersion() { return kNewestVersion; }

Result<Database, StoreError> openCatalogueForWriting(const std::string& indexFolder) {
  Result<Database, StoreError> database = Database::openForWriting(pathIn(indexFolder));
  if (!database) return database.error();
  // Each commit is on the disk when it is done: an index names contents by their numbers, which
  // must not be given again after a loss of power.
  for (const char* setting :
       {"PRAGMA page_size = 8192", "PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL",
        "PRAGMA cache_size = -16384", "PRAGMA journal_size_limit = 67108864"}) {
    if (StoreFailure failure = database->execute(setting)) return *std::move(failure);
  }
  if (StoreFailure failure = addContentTokenizer(*database)) return *std::move(failure);
  const Result<Marks, StoreError> marks = marksOf(*database);
  if (!marks) return marks.error();
  if (marks->objects == 0 && marks->version == 0) {
    if (StoreFailure failure = make(*database)) return *std::move(failure);
  } else if (isForeign(*marks)) {
    return foreign(*database, *marks);
  }
  return database;
}

Result<Database, StoreError> openCatalogueForReading(const std::string& indexFolder) {
  Result<Database, StoreError> database = Database::openForReading(pathIn(indexFolder));
  if (!database) return database.error();
  if (StoreFailure failure = addContentTokenizer(*database)) return *std::move(failure);
  const Result<Marks, StoreError> marks = marksOf(*database);
  if (!marks) return marks.error();
  if (isForeign(*marks)) {
    return foreign(*database, *marks);
  }
  return database;
}

StoreFailure removeCatalogue(const std::string& indexFolder) {
  // The file itself first: the log of a file that is new, SQLite takes away; a file without its log
  // it would take for whole.
  for (const char* suffix : {"", "-wal", "-shm"}) {
    const std::string path = pathIn(indexFolder) + suffix;
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) return systemError(errno, "remove", path);
  }
  return std::nullopt;
}

}  // namespace vt
