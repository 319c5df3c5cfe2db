#include "metadata/database/PageChecksums.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <xxhash.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "metadata/database/SQLite.h"

namespace vt {
namespace {

// What stands where in the head of a database file, which begins the first page.
constexpr std::size_t kHeadBytes = 100;
constexpr std::size_t kPageSizeAt = 16;
constexpr std::size_t kReservedAt = 20;

constexpr std::size_t kSmallestPage = 512;
constexpr std::size_t kLargestPage = 65536;
// SQLite locks bytes here, and writes no page that holds them.
constexpr std::int64_t kLockedByte = 0x40000000;

/// The size of pages in a file of that head; 0 when they have no checksums, or it is no such head.
std::size_t pageSizeIn(std::span<const std::byte> head) {
  if (std::to_integer<int>(head[kReservedAt]) != kPageChecksumBytes) return 0;
  const std::size_t written = std::to_integer<std::size_t>(head[kPageSizeAt]) << 8 |
                              std::to_integer<std::size_t>(head[kPageSizeAt + 1]);
  const std::size_t size = written == 1 ? kLargestPage : written;
  return std::has_single_bit(size) && size >= kSmallestPage ? size : 0;
}

/// Of all but the end of the page. It also tells a page from the same one elsewhere in the file.
std::uint64_t checksumOf(std::span<const std::byte> page, std::int64_t offset) {
  return XXH3_64bits_withSeed(page.data(), page.size() - kPageChecksumBytes,
                              static_cast<std::uint64_t>(offset));
}

bool isWhole(std::span<const std::byte> page, std::int64_t offset) {
  std::uint64_t written = 0;
  std::memcpy(&written, page.last(kPageChecksumBytes).data(), sizeof written);
  return written == checksumOf(page, offset);
}

/// A database file as SQLite sees it. The system's own file follows behind it in memory.
class ChecksummedFile : public sqlite3_file {
 public:
  static int open(sqlite3_vfs* files, const char* path, sqlite3_file* place, int flags,
                  int* outFlags) {
    auto* const system = static_cast<sqlite3_vfs*>(files->pAppData);
    // A log goes by the system's own way, in the place of this one.
    if ((flags & SQLITE_OPEN_MAIN_DB) == 0) {
      return system->xOpen(system, path, place, flags, outFlags);
    }
    auto* const file = new (place) ChecksummedFile;
    file->pMethods = nullptr;
    const int code = system->xOpen(system, path, file->system(), flags, outFlags);
    if (code == SQLITE_OK) file->pMethods = &kMethods;
    return code;
  }

 private:
  static ChecksummedFile& of(sqlite3_file* file) { return *static_cast<ChecksummedFile*>(file); }
  sqlite3_file* system() { return reinterpret_cast<sqlite3_file*>(this + 1); }

  /// Calls the system's method of that name.
  template <auto kMethod, class... Arguments>
  static auto passOn(sqlite3_file* file, Arguments... arguments) {
    sqlite3_file* const system = of(file).system();
    return (system->pMethods->*kMethod)(system, arguments...);
  }

  void learn(std::span<const std::byte> start, std::int64_t offset) {
    if (offset == 0 && start.size() >= kHeadBytes) pageSize_ = pageSizeIn(start);
  }

  static int read(sqlite3_file* file, void* bytes, int count, sqlite3_int64 offset) {
    const int code = passOn<&sqlite3_io_methods::xRead>(file, bytes, count, offset);
    if (code != SQLITE_OK) return code;
    const std::span page(static_cast<const std::byte*>(bytes), static_cast<std::size_t>(count));
    of(file).learn(page, offset);
    if (page.size() != of(file).pageSize_ || isWhole(page, offset)) return SQLITE_OK;
    return SQLITE_IOERR_DATA;
  }

  static int write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 offset) {
    const std::span page(static_cast<const std::byte*>(bytes), static_cast<std::size_t>(count));
    of(file).learn(page, offset);
    if (page.size() != of(file).pageSize_) {
      return passOn<&sqlite3_io_methods::xWrite>(file, bytes, count, offset);
    }
    std::array<std::byte, kLargestPage> copy;
    const std::uint64_t checksum = checksumOf(page, offset);
    std::memcpy(copy.data(), page.data(), page.size());
    std::memcpy(copy.data() + page.size() - kPageChecksumBytes, &checksum, sizeof checksum);
    const void* const summed = copy.data();
    return passOn<&sqlite3_io_methods::xWrite>(file, summed, count, offset);
  }

  static const sqlite3_io_methods kMethods;

  std::size_t pageSize_ = 0;  // 0 while pages have no checksums
};

// Of version 2, which maps no files: what is read is checked.
const sqlite3_io_methods ChecksummedFile::kMethods = {
    .iVersion = 2,
    .xClose = passOn<&sqlite3_io_methods::xClose>,
    .xRead = read,
    .xWrite = write,
    .xTruncate = passOn<&sqlite3_io_methods::xTruncate>,
    .xSync = passOn<&sqlite3_io_methods::xSync>,
    .xFileSize = passOn<&sqlite3_io_methods::xFileSize>,
    .xLock = passOn<&sqlite3_io_methods::xLock>,
    .xUnlock = passOn<&sqlite3_io_methods::xUnlock>,
    .xCheckReservedLock = passOn<&sqlite3_io_methods::xCheckReservedLock>,
    .xFileControl = passOn<&sqlite3_io_methods::xFileControl>,
    .xSectorSize = passOn<&sqlite3_io_methods::xSectorSize>,
    .xDeviceCharacteristics = passOn<&sqlite3_io_methods::xDeviceCharacteristics>,
    .xShmMap = passOn<&sqlite3_io_methods::xShmMap>,
    .xShmLock = passOn<&sqlite3_io_methods::xShmLock>,
    .xShmBarrier = passOn<&sqlite3_io_methods::xShmBarrier>,
    .xShmUnmap = passOn<&sqlite3_io_methods::xShmUnmap>,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

/// A database file, open for reading by SQLite's own way: with any other descriptor, closing it
/// would take all locks away that this process has on the file.
class FileOfSQLite {
 public:
  explicit FileOfSQLite(const std::string& path)
      : files_(sqlite().sqlite3_vfs_find(nullptr)),
        name_(path + '\0'),
        memory_(std::make_unique<std::byte[]>(static_cast<std::size_t>(files_->szOsFile))) {
    code_ = files_->xOpen(files_, name_.c_str(), file(), SQLITE_OPEN_READONLY | SQLITE_OPEN_MAIN_DB,
                          nullptr);
  }
  FileOfSQLite(const FileOfSQLite&) = delete;
  FileOfSQLite& operator=(const FileOfSQLite&) = delete;
  ~FileOfSQLite() {
    if (file()->pMethods != nullptr) file()->pMethods->xClose(file());
  }

  /// SQLITE_OK when it is open.
  int code() const { return code_; }
  /// SQLITE_IOERR_SHORT_READ when there is less; the rest is then zeros.
  int read(std::span<std::byte> bytes, std::int64_t offset) const {
    return file()->pMethods->xRead(file(), bytes.data(), static_cast<int>(bytes.size()), offset);
  }
  /// Whether nothing is there any more; also when nobody can tell.
  bool endsAt(std::int64_t offset) const {
    sqlite3_int64 size = 0;
    return file()->pMethods->xFileSize(file(), &size) != SQLITE_OK || size <= offset;
  }

 private:
  sqlite3_file* file() const { return reinterpret_cast<sqlite3_file*>(memory_.get()); }

  sqlite3_vfs* files_;
  std::string name_;  // ended by two zeros, and kept as long as the file is open
  std::unique_ptr<std::byte[]> memory_;
  int code_;
};

}  // namespace

const char* checksummedFiles() {
  static constexpr const char* kName = "vistaro-checksummed";
  static sqlite3_vfs* const files = [] {
    sqlite3_vfs* const system = sqlite().sqlite3_vfs_find(nullptr);
    static sqlite3_vfs made = *system;
    made.pNext = nullptr;
    made.zName = kName;
    made.szOsFile += static_cast<int>(sizeof(ChecksummedFile));
    made.pAppData = system;
    // The others ask nothing of the sqlite3_vfs that they are given.
    made.xOpen = ChecksummedFile::open;
    sqlite().sqlite3_vfs_register(&made, /*makeDflt=*/0);
    return &made;
  }();
  return files->zName;
}

StoreFailure checkPages(const std::string& path) {
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return systemError(errno, "open", path);
  const auto failure = [&](int code) {
    return databaseError(code, sqlite().sqlite3_errstr(code), path);
  };
  const FileOfSQLite file(path);
  if (file.code() != SQLITE_OK) return failure(file.code());
  std::array<std::byte, kHeadBytes> head{};
  const int headCode = file.read(head, 0);
  if (headCode != SQLITE_OK && headCode != SQLITE_IOERR_SHORT_READ) return failure(headCode);
  const std::size_t pageSize = pageSizeIn(head);
  if (pageSize == 0) return std::nullopt;
  std::vector<std::byte> page(pageSize);
  for (std::int64_t offset = 0;; offset += static_cast<std::int64_t>(pageSize)) {
    constexpr int kMostReads = 100;
    bool isSound = false;
    // Another process may be in the middle of writing it.
    for (int reads = 0; reads < kMostReads && !isSound; ++reads) {
      const int code = file.read(page, offset);
      if (code == SQLITE_IOERR_SHORT_READ && file.endsAt(offset)) return std::nullopt;
      if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ) return failure(code);
      isSound = (code == SQLITE_OK && isWhole(page, offset)) || offset == kLockedByte;
    }
    if (!isSound) {
      return damageError(path, fmt::format("page {} is not what was written",
                                           offset / static_cast<std::int64_t>(pageSize) + 1));
    }
  }
}

}  // namespace vt
