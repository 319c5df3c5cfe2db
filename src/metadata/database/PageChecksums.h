#pragma once

#include "metadata/database/Database.h"

namespace vt {

/// SQLite's way to files by which each page of a database ends in its checksum: bytes that its disk
/// has changed are damage, and never an answer. Of databases that were made without, and of their
/// logs, which have checksums of their own, nothing is checked. Registered with SQLite at the first
/// call; the name to be given when a database is opened.
const char* checksummedFiles();

/// Bytes at the end of each page that are not SQLite's: to be asked for before the first page of a
/// database is written, or before one is written anew by VACUUM.
inline constexpr int kPageChecksumBytes = 8;

/// Reads all pages in the file of a database with checksums, also those that nothing refers to.
/// kDamaged when one is not what was written. What is in the log only is not looked at; others may
/// write meanwhile.
StoreFailure checkPages(const std::string& path);

}  // namespace vt
