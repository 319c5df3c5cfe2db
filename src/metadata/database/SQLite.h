#pragma once

#include <sqlite3.h>

#include "foundation/SharedLibrary.h"

// The functions of SQLite that are used.
#define VT_SQLITE_FUNCTIONS(X) \
  X(sqlite3_bind_blob64)       \
  X(sqlite3_bind_int64)        \
  X(sqlite3_bind_null)         \
  X(sqlite3_bind_pointer)      \
  X(sqlite3_bind_text64)       \
  X(sqlite3_busy_timeout)      \
  X(sqlite3_clear_bindings)    \
  X(sqlite3_close_v2)          \
  X(sqlite3_column_blob)       \
  X(sqlite3_column_bytes)      \
  X(sqlite3_column_int64)      \
  X(sqlite3_column_type)       \
  X(sqlite3_db_config)         \
  X(sqlite3_db_handle)         \
  X(sqlite3_errmsg)            \
  X(sqlite3_errstr)            \
  X(sqlite3_exec)              \
  X(sqlite3_extended_errcode)  \
  X(sqlite3_file_control)      \
  X(sqlite3_finalize)          \
  X(sqlite3_get_autocommit)    \
  X(sqlite3_last_insert_rowid) \
  X(sqlite3_open_v2)           \
  X(sqlite3_prepare_v2)        \
  X(sqlite3_prepare_v3)        \
  X(sqlite3_reset)             \
  X(sqlite3_step)              \
  X(sqlite3_vfs_find)          \
  X(sqlite3_vfs_register)

namespace vt {

/// SQLite, loaded at its first use: a search by names does without it. Its members are the
/// functions of their names.
struct SQLite {
  const SharedLibrary library{"libsqlite3.so.0"};
  VT_SQLITE_FUNCTIONS(VT_LIBRARY_FUNCTION)
};

/// Throws std::runtime_error when SQLite is not installed.
const SQLite& sqlite();

}  // namespace vt
