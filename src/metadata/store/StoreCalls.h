#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

namespace vt {

/// The system calls by which an index is written, as the system has them: -1 and `errno` say that
/// one failed. Virtual so that each can be made to fail.
class StoreCalls {
 public:
  virtual ~StoreCalls() = default;

  /// Those of the system itself.
  static StoreCalls& system();

  /// Makes a new file for writing, for this user alone; fails when there is one of that name.
  virtual int create(int folder, const char* name);
  virtual ssize_t write(int file, const void* bytes, std::size_t count, std::uint64_t offset);
  /// Sets space on the disk aside for bytes that are yet to be written, beyond the end of the file.
  virtual int reserve(int file, std::uint64_t offset, std::uint64_t count);
  /// Has what was written begin to reach the disk, without waiting for it.
  virtual void startSync(int file);
  /// Gives back what was set aside beyond `size`.
  virtual int truncate(int file, std::uint64_t size);
  virtual int sync(int fileOrFolder);
  virtual int rename(int folder, const char* from, const char* to);
  virtual int unlink(int folder, const char* name);
};

}  // namespace vt
