#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/Result.h"
#include "metadata/store/StoreError.h"

struct sqlite3;  // of libsqlite3
struct sqlite3_stmt;

namespace vt {

/// What a statement or connection came to; nothing when all is well.
using StoreFailure = std::optional<StoreError>;

/// A prepared statement of a Database, which must outlive it. Used again and again.
///
/// Once a step has failed, finish() tells why and begins anew, as run() and restart() do.
class Statement {
 public:
  Statement() = default;
  Statement(sqlite3_stmt* statement, const std::string* path)
      : statement_(statement), path_(path) {}

  /// Takes off what was bound and stepped.
  Statement& restart();

  // Places count from 1. Bytes are borrowed until the next restart.
  Statement& bind(int place, std::int64_t number);
  Statement& bind(int place, std::string_view text);
  Statement& bindBytes(int place, std::string_view bytes);
  Statement& bindNull(int place);

  /// Steps to the next row; false at the end, and when it failed.
  bool next();
  /// Runs a statement that gives no rows, to its end. The bound values go.
  StoreFailure run();

  // Of the row; columns count from 0. Bytes are good until the next step.
  std::int64_t number(int column) const;
  std::string_view bytes(int column) const;
  bool isNull(int column) const;

  /// Ends the reading of rows. Why next() gave no row, unless there was none.
  StoreFailure finish();

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };

  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
  const std::string* path_ = nullptr;  // for errors; the database's
  StoreFailure error_;
};

/// A connection to an SQLite database file. One thread at a time.
class Database {
 public:
  /// Opens the file at `path`, which is made with mode 0600 if it is missing, to read and write.
  static Result<Database, StoreError> openForWriting(const std::string& path);
  /// Opens the file at `path` to be read while another process may write. kMissing when there is
  /// none.
  static Result<Database, StoreError> openForReading(const std::string& path);

  const std::string& path() const { return *path_; }
  sqlite3* handle() const { return connection_.get(); }

  /// Has each page end in its checksum, if it is called before the first one is written; else from
  /// the next VACUUM on. Who opens such a database checks them.
  StoreFailure keepChecksums() const;
  /// Whether each page ends in its checksum.
  Result<bool, StoreError> hasChecksums() const;

  /// Runs one or several statements that give no rows.
  StoreFailure execute(const char* statements) const;
  /// Prepares a statement of the program's own: it must be right, but the file may be damaged.
  Result<Statement, StoreError> prepare(std::string_view statement) const;
  /// The same for several.
  StoreFailure prepareAll(
      std::initializer_list<std::pair<Statement*, std::string_view>> statements) const;
  /// The number that a statement gives in its first row; 0 when it gives none.
  Result<std::int64_t, StoreError> number(std::string_view statement) const;

 private:
  struct Close {
    void operator()(sqlite3* connection) const;
  };

  static Result<Database, StoreError> open(const std::string& path, int flags);
  /// Asks for bytes at the end of each page; how many there are, or were asked for, before.
  Result<int, StoreError> reserveBytes(int bytes) const;
  StoreError lastError() const;

  // On the heap, since statements hold on to it while a database is moved.
  std::unique_ptr<const std::string> path_;
  std::unique_ptr<sqlite3, Close> connection_;
};

/// What SQLite's result code `code` with its words `message` comes to.
StoreError databaseError(int code, std::string_view message, std::string_view path);

/// A transaction, which is undone unless it is committed.
class Transaction {
 public:
  /// Begins it. Of one for writing no other may be under way.
  explicit Transaction(const Database& database, bool isForWriting = true);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  /// Why it could not be begun.
  const StoreFailure& error() const { return error_; }
  StoreFailure commit();

 private:
  const Database& database_;
  StoreFailure error_;
  bool isOpen_ = false;
};

}  // namespace vt
