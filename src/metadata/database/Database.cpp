#include "metadata/database/Database.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>
#include <utility>

#include "metadata/database/PageChecksums.h"
#include "metadata/database/SQLite.h"
#include "metadata/live/Descriptor.h"

namespace vt {
namespace {

// Longer than any batch of the indexer takes to commit.
constexpr int kPatienceMillis = 5000;

StoreError::Kind kindOf(int code) {
  switch (code & 0xFF) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return StoreError::Kind::kDamaged;
    case SQLITE_FULL:
      return StoreError::Kind::kNoSpace;
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return StoreError::Kind::kReadOnly;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return StoreError::Kind::kLocked;
    case SQLITE_TOOBIG:
      return StoreError::Kind::kTooLarge;
    default:
      return StoreError::Kind::kFailed;
  }
}

/// Whether the file lies on a file system that nobody can write to.
bool isOnReadOnlyFileSystem(const std::string& path) {
  struct statvfs status{};
  return ::statvfs(path.c_str(), &status) == 0 && (status.f_flag & ST_RDONLY) != 0;
}

/// The path as a URI of SQLite, with `parameters`.
std::string uriOf(const std::string& path, std::string_view parameters) {
  std::string uri = "file:";
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      uri += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    } else {
      uri += c;
    }
  }
  return uri.append("?").append(parameters);
}

/// Why a file that is there can't be written to as a database. It is not opened to find out: closed
/// again, all locks would be gone that this process has on it by another connection.
StoreFailure refusalToWrite(const std::string& path) {
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return systemError(errno, "open", path);
  if (S_ISLNK(status.st_mode)) return systemError(ELOOP, "open", path);
  if (S_ISDIR(status.st_mode)) return systemError(EISDIR, "open", path);
  if (!S_ISREG(status.st_mode)) return damageError(path, "it is no file");
  if (::faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0) return std::nullopt;
  return systemError(errno, "open", path);
}

}  // namespace

StoreError databaseError(int code, std::string_view message, std::string_view path) {
  if (code == SQLITE_IOERR_DATA) return damageError(path, "a page of it is not what was written");
  const StoreError::Kind kind = kindOf(code);
  if (kind == StoreError::Kind::kDamaged) return damageError(path, message);
  return {kind, fmt::format("cannot use {}: {}", path, message)};
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite().sqlite3_finalize(statement);
}

Statement& Statement::restart() {
  sqlite().sqlite3_reset(statement_.get());
  sqlite().sqlite3_clear_bindings(statement_.get());
  error_.reset();
  return *this;
}

Statement& Statement::bind(int place, std::int64_t number) {
  sqlite().sqlite3_bind_int64(statement_.get(), place, number);
  return *this;
}

Statement& Statement::bind(int place, std::string_view text) {
  sqlite().sqlite3_bind_text64(statement_.get(), place, text.data(), text.size(), SQLITE_STATIC,
                               SQLITE_UTF8);
  return *this;
}

Statement& Statement::bindBytes(int place, std::string_view bytes) {
  // Bytes without an address would be NULL.
  sqlite().sqlite3_bind_blob64(statement_.get(), place, bytes.empty() ? "" : bytes.data(),
                               bytes.size(), SQLITE_STATIC);
  return *this;
}

Statement& Statement::bindNull(int place) {
  sqlite().sqlite3_bind_null(statement_.get(), place);
  return *this;
}

bool Statement::next() {
  const int code = sqlite().sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) {
    error_ = databaseError(
        code, sqlite().sqlite3_errmsg(sqlite().sqlite3_db_handle(statement_.get())), *path_);
  }
  return false;
}

StoreFailure Statement::run() {
  next();
  return finish();
}

StoreFailure Statement::finish() {
  StoreFailure failure = error_;
  restart();
  return failure;
}

std::int64_t Statement::number(int column) const {
  return sqlite().sqlite3_column_int64(statement_.get(), column);
}

std::string_view Statement::bytes(int column) const {
  const auto* const bytes =
      static_cast<const char*>(sqlite().sqlite3_column_blob(statement_.get(), column));
  if (bytes == nullptr) return {};
  return {bytes, static_cast<std::size_t>(sqlite().sqlite3_column_bytes(statement_.get(), column))};
}

bool Statement::isNull(int column) const {
  return sqlite().sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

void Database::Close::operator()(sqlite3* connection) const {
  sqlite().sqlite3_close_v2(connection);
}

Result<Database, StoreError> Database::openForWriting(const std::string& path) {
  // Not by SQLite, which would make it with mode 0644, and follow a link. Its other files take the
  // mode of this one.
  const bool isMade =
      Descriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600)).isOpen();
  if (!isMade && errno != EEXIST) return systemError(errno, "open", path);
  if (!isMade) {
    if (StoreFailure refusal = refusalToWrite(path)) return *std::move(refusal);
  }
  return open(path, SQLITE_OPEN_READWRITE);
}

Result<Database, StoreError> Database::openForReading(const std::string& path) {
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return systemError(errno, "open", path);
  if (!S_ISREG(status.st_mode)) return damageError(path, "it is no file");
  return open(path, SQLITE_OPEN_READONLY);
}

Result<Database, StoreError> Database::open(const std::string& path, int flags) {
  // Without this a reader needs to write beside the file, which nobody can there.
  const bool neverChanges = flags == SQLITE_OPEN_READONLY && isOnReadOnlyFileSystem(path);
  Database opened;
  opened.path_ = std::make_unique<const std::string>(path);
  sqlite3* connection = nullptr;
  const int code = sqlite().sqlite3_open_v2(
      uriOf(path, neverChanges ? "immutable=1" : "psow=1").c_str(), &connection,
      flags | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, checksummedFiles());
  opened.connection_.reset(connection);
  if (code != SQLITE_OK) return databaseError(code, sqlite().sqlite3_errstr(code), path);
  sqlite().sqlite3_busy_timeout(connection, kPatienceMillis);
  // A file is data, never orders to this process.
  sqlite().sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite().sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  return opened;
}

StoreError Database::lastError() const {
  return databaseError(sqlite().sqlite3_extended_errcode(handle()),
                       sqlite().sqlite3_errmsg(handle()), *path_);
}

StoreFailure Database::keepChecksums() const {
  const auto before = reserveBytes(kPageChecksumBytes);
  return before ? StoreFailure() : before.error();
}

Result<bool, StoreError> Database::hasChecksums() const {
  constexpr int kAsItIs = -1;
  const auto bytes = reserveBytes(kAsItIs);
  if (!bytes) return bytes.error();
  return *bytes == kPageChecksumBytes;
}

Result<int, StoreError> Database::reserveBytes(int bytes) const {
  const int code =
      sqlite().sqlite3_file_control(handle(), "main", SQLITE_FCNTL_RESERVE_BYTES, &bytes);
  if (code != SQLITE_OK) return databaseError(code, sqlite().sqlite3_errstr(code), *path_);
  return bytes;
}

StoreFailure Database::execute(const char* statements) const {
  if (sqlite().sqlite3_exec(handle(), statements, nullptr, nullptr, nullptr) == SQLITE_OK) {
    return std::nullopt;
  }
  return lastError();
}

Result<Statement, StoreError> Database::prepare(std::string_view statement) const {
  sqlite3_stmt* prepared = nullptr;
  if (sqlite().sqlite3_prepare_v3(handle(), statement.data(), static_cast<int>(statement.size()),
                                  SQLITE_PREPARE_PERSISTENT, &prepared, nullptr) != SQLITE_OK) {
    return lastError();
  }
  return Statement(prepared, path_.get());
}

StoreFailure Database::prepareAll(
    std::initializer_list<std::pair<Statement*, std::string_view>> statements) const {
  for (const auto& [statement, words] : statements) {
    Result<Statement, StoreError> made = prepare(words);
    if (!made) return made.error();
    *statement = std::move(made).value();
  }
  return std::nullopt;
}

Result<std::int64_t, StoreError> Database::number(std::string_view statement) const {
  Result<Statement, StoreError> asked = prepare(statement);
  if (!asked) return asked.error();
  const std::int64_t number = asked->next() ? asked->number(0) : 0;
  if (StoreFailure failure = asked->finish()) return *std::move(failure);
  return number;
}

Transaction::Transaction(const Database& database, bool isForWriting)
    : database_(database), error_(database.execute(isForWriting ? "BEGIN IMMEDIATE" : "BEGIN")) {
  isOpen_ = !error_;
}

Transaction::~Transaction() {
  // It may have been undone by the failure that led here.
  if (isOpen_ && sqlite().sqlite3_get_autocommit(database_.handle()) == 0) {
    static_cast<void>(database_.execute("ROLLBACK"));
  }
}

StoreFailure Transaction::commit() {
  if (error_) return error_;
  StoreFailure failure = database_.execute("COMMIT");
  if (!failure) isOpen_ = false;
  return failure;
}

}  // namespace vt
