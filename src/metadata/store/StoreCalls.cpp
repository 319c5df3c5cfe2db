#include "metadata/store/StoreCalls.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

namespace vt {

StoreCalls& StoreCalls::system() {
  static StoreCalls calls;
  return calls;
}

int StoreCalls::create(int folder, const char* name) {
  return ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
}

ssize_t StoreCalls::write(int file, const void* bytes, std::size_t count, std::uint64_t offset) {
  return ::pwrite(file, bytes, count, static_cast<off_t>(offset));
}

int StoreCalls::reserve(int file, std::uint64_t offset, std::uint64_t count) {
  return ::fallocate(file, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
                     static_cast<off_t>(count));
}

void StoreCalls::startSync(int file) { ::sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE); }

int StoreCalls::truncate(int file, std::uint64_t size) {
  return ::ftruncate(file, static_cast<off_t>(size));
}

int StoreCalls::sync(int fileOrFolder) { return ::fsync(fileOrFolder); }

int StoreCalls::rename(int folder, const char* from, const char* to) {
  return ::renameat(folder, from, folder, to);
}

int StoreCalls::unlink(int folder, const char* name) { return ::unlinkat(folder, name, 0); }

}  // namespace vt
