#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"
#include "foundation/Result.h"

namespace vt {

/// Why a file operation failed.
struct FileError {
  int number = 0;    ///< errno
  std::string text;  ///< what was tried, on which path, and the system's own words
};

/// What `stat` says of a file, links followed.
struct FileRights {
  std::uint64_t ownerId = 0;
  std::uint64_t groupId = 0;
  std::uint32_t permissions = 0;  ///< the twelve permission bits
};

/// The file manager: what the library does with files of its own, and the status of others'.
/// Paths are bytes and need not be UTF-8.
class Files {
 public:
  virtual ~Files() = default;

  virtual bool exists(const std::string& path) const = 0;

  /// Whether there is a directory at `path`, links followed. False also when nobody can tell.
  virtual bool isDirectory(const std::string& path) const = 0;

  /// Creates one directory (the parent must exist) with the default permissions of the process.
  virtual bool createDirectory(const std::string& path) = 0;

  /// The same with mode 0700, whatever the process's mask.
  virtual bool createPrivateDirectory(const std::string& path) = 0;

  /// Gives `path` to the group called `groupOwner` and the POSIX permissions `permissions`. False
  /// when either fails; the other may then have been changed.
  virtual bool changeAttributes(const std::string& path, const std::string& groupOwner,
                                std::uint32_t permissions) = 0;

  /// The whole file, links followed. An error when it is missing, unreadable, no regular file or
  /// longer than `limit` bytes.
  virtual Result<std::string, FileError> read(const std::string& path,
                                              std::uint64_t limit) const = 0;

  /// The whole content of a file of somebody's, as a searched file is opened: a link at the very
  /// end is not followed, nobody is waited for, and the access time stays where the system allows.
  /// An error when it is missing, unreadable, no regular file or longer than `limit` bytes, which
  /// costs no reading then.
  virtual Result<std::string, FileError> readContent(const std::string& path,
                                                     std::uint64_t limit) const = 0;

  /// Opens a file of somebody's for reading, as readContent() does. The descriptor is the caller's
  /// to close. An error when the file is missing, unreadable or no regular file.
  virtual Result<int, FileError> openContent(const std::string& path) const = 0;

  /// Replaces `path` by `bytes` as a whole: written beside with mode 0600, synced, renamed, and the
  /// folder synced. On an error the old file is as it was and nothing is left beside it; only when
  /// it is the folder that could not be synced, the new file stands already.
  [[nodiscard]] virtual std::optional<FileError> writeAtomically(const std::string& path,
                                                                 std::string_view bytes) = 0;

  /// Sees to it that what `path` holds stays under `keptPath`, in the same folder, when `path` is
  /// replaced. A file that is called so already stays, which counts as success.
  [[nodiscard]] virtual std::optional<FileError> keepAs(const std::string& path,
                                                        const std::string& keptPath) = 0;

  /// What `stat` answers; nothing when it fails.
  virtual std::optional<FileRights> status(const std::string& path) const = 0;

  /// When the content of `path` was last changed, links followed; nothing when nobody can tell.
  virtual std::optional<Date> modificationDate(const std::string& path) const = 0;

  /// Removes the file or link at `path`; false when there is none, or a folder, or it must stay.
  virtual bool removeFile(const std::string& path) = 0;

  /// Gives the file at `from` the name `to`, on the same file system; a file called so is replaced.
  /// False when that fails, and both are as they were.
  virtual bool moveFile(const std::string& from, const std::string& to) = 0;
};

}  // namespace vt
