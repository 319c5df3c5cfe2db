#include "metadata/catalogue/CatalogueFile.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "metadata/database/PageChecksums.h"
#include "metadata/text/ContentTokenizer.h"
#include "metadata/text/TextIndex.h"

namespace vt {
namespace {

constexpr int kNewestVersion = 3;
constexpr std::int64_t kApplication = 0x56'54'43'61;  // "VTCa"

/// The text index, empty.
std::string textSchema() {
  return TextIndex::schema() + R"(;
    -- Pages of that table as large as those of the file take.
    INSERT INTO text(text, rank) VALUES('pgsz', 8100);
    -- What so many bytes of terms take is gathered in memory before it is written.
    INSERT INTO text(text, rank) VALUES('hashsize', 16777216);
  )";
}

std::string schema() {
  return R"(
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
  )" + textSchema();
}

// Files have attributes beside their content, too. Those of before are looked at with the next run.
constexpr const char* kSecondVersion = R"(
    ALTER TABLE content ADD COLUMN attributes_changed INTEGER NOT NULL DEFAULT 0;
    CREATE TABLE attributes_seen(segment INTEGER PRIMARY KEY);
  )";

/// The terms of texts are others. Files with text are looked into again, as no extractor has
/// version 0; all others keep what was found in them.
std::string thirdVersion() {
  return "DROP TABLE text;"
         "UPDATE content SET extractor_version = 0 WHERE has_text = 1;" +
         textSchema();
}

/// What brings a catalogue of each version, from 1 on, to the next.
std::array<std::string, kNewestVersion - 1> migrations() {
  return {kSecondVersion, thirdVersion()};
}

struct Marks {
  std::int64_t application = 0;
  std::int64_t version = 0;
  std::int64_t objects = 0;  // tables and the like

  bool isForeign() const {
    return application != kApplication || version < 1 || version > kNewestVersion;
  }
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

StoreError foreign(const Database& database, const Marks& marks) {
  return {StoreError::Kind::kOtherKind,
          marks.application == kApplication
              ? fmt::format("{} is of version {}, and this program knows version {}",
                            database.path(), marks.version, newestCatalogueVersion())
              : fmt::format("{} is no catalogue of an index", database.path())};
}

/// In one transaction, that it is a catalogue of this version included.
StoreFailure execute(const Database& database, std::span<const std::string> steps) {
  Transaction transaction(database);
  for (const std::string& step : steps) {
    if (StoreFailure failure = database.execute(step.c_str())) return failure;
  }
  const std::string marks = fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {}",
                                        kApplication, kNewestVersion);
  if (StoreFailure failure = database.execute(marks.c_str())) return failure;
  return transaction.commit();
}

StoreFailure make(const Database& database) {
  const std::array<std::string, 1> whole{schema()};
  return execute(database, whole);
}

StoreFailure migrate(const Database& database, std::int64_t version) {
  // Before version 3 pages had no checksums. Killed in between, it is done again.
  if (StoreFailure failure = database.execute("VACUUM")) return failure;
  const auto steps = migrations();
  return execute(database, std::span(steps).subspan(static_cast<std::size_t>(version) - 1));
}

/// Damage, when pages of a catalogue of this version have no checksums.
StoreFailure lackOfChecksums(const Database& database) {
  const Result<bool, StoreError> has = database.hasChecksums();
  if (!has) return has.error();
  return *has ? StoreFailure() : damageError(database.path(), "its pages have no checksums");
}

std::string pathIn(const std::string& indexFolder) { return indexFolder + "/" + kCatalogueName; }

}  // namespace

int newestCatalogueVersion() { return kNewestVersion; }

Result<Database, StoreError> openCatalogueForWriting(const std::string& indexFolder) {
  Result<Database, StoreError> database = Database::openForWriting(pathIn(indexFolder));
  if (!database) return database.error();
  const Result<Marks, StoreError> marks = marksOf(*database);
  if (!marks) return marks.error();
  const bool isNew = marks->objects == 0 && marks->version == 0;
  if (!isNew && marks->isForeign()) return foreign(*database, *marks);
  StoreFailure failure =
      marks->version == kNewestVersion ? lackOfChecksums(*database) : database->keepChecksums();
  if (failure) return *std::move(failure);
  // Each commit is on the disk when it is done: an index names contents by their numbers, which
  // must not be given again after a loss of power.
  for (const char* setting :
       {"PRAGMA page_size = 8192", "PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL",
        "PRAGMA cache_size = -16384", "PRAGMA journal_size_limit = 67108864"}) {
    failure = database->execute(setting);
    if (failure) return *std::move(failure);
  }
  failure = addContentTokenizer(*database);
  if (!failure && isNew) failure = make(*database);
  if (!failure && !isNew && marks->version < kNewestVersion) {
    failure = migrate(*database, marks->version);
  }
  if (failure) return *std::move(failure);
  return database;
}

Result<Database, StoreError> openCatalogueForReading(const std::string& indexFolder) {
  Result<Database, StoreError> database = Database::openForReading(pathIn(indexFolder));
  if (!database) return database.error();
  const Result<Marks, StoreError> marks = marksOf(*database);
  if (!marks) return marks.error();
  if (marks->isForeign() || marks->version != kNewestVersion) return foreign(*database, *marks);
  StoreFailure failure = lackOfChecksums(*database);
  if (!failure) failure = addContentTokenizer(*database);
  if (failure) return *std::move(failure);
  return database;
}

StoreFailure checkCataloguePages(const std::string& indexFolder) {
  return checkPages(pathIn(indexFolder));
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
