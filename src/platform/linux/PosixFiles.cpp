#include "platform/linux/PosixFiles.h"

#include <errno.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "metadata/live/OpenForReading.h"
#include "platform/linux/AccountRecords.h"
#include "platform/linux/Accounts.h"
#include "platform/linux/FileDescriptor.h"

namespace vt {
namespace {

// Far longer than any write takes.
constexpr time_t kLeftoverAgeInSeconds = 3600;

FileError errorOf(int number, std::string_view what, const std::string& path) {
  return {number, fmt::format("{} {}: {}", what, path, std::generic_category().message(number))};
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string temporaryPrefix(const std::string& path) {
  return "." + path.substr(path.rfind('/') + 1) + ".tmp-";
}

void removeLeftovers(const std::string& path) {
  const std::string prefix = temporaryPrefix(path);
  const time_t now = ::time(nullptr);
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator(folderOf(path), ignored)) {
    if (!entry.path().filename().string().starts_with(prefix)) continue;
    struct stat status{};
    if (::lstat(entry.path().c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
        now - status.st_mtime > kLeftoverAgeInSeconds) {
      ::unlink(entry.path().c_str());
    }
  }
}

/// All that the open regular file holds; `path` is for errors.
Result<std::string, FileError> readAll(int descriptor, const std::string& path,
                                       std::uint64_t limit) {
  struct stat status{};
  if (::fstat(descriptor, &status) != 0) return errorOf(errno, "stat", path);
  if (!S_ISREG(status.st_mode)) {
    return errorOf(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, "read", path);
  }
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size > limit) return errorOf(EFBIG, "read", path);
  std::string bytes;
  bytes.reserve(std::min(size + 1, limit));
  char buffer[65536];
  // The size is only what it was a moment ago, and 0 for files that are made while one reads.
  while (true) {
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errorOf(errno, "read", path);
    if (count == 0) return bytes;
    if (bytes.size() + static_cast<std::size_t>(count) > limit) return errorOf(EFBIG, "read", path);
    bytes.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

PosixFiles::PosixFiles() : PosixFiles(systemAccounts()) {}

PosixFiles::PosixFiles(std::shared_ptr<const Accounts> accounts) : accounts_(std::move(accounts)) {}

bool PosixFiles::exists(const std::string& path) const {
  struct stat status{};
  return ::stat(path.c_str(), &status) == 0;
}

bool PosixFiles::isDirectory(const std::string& path) const {
  struct stat status{};
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool PosixFiles::createDirectory(const std::string& path) {
  return ::mkdir(path.c_str(), 0777) == 0;  // less the process's umask
}

bool PosixFiles::createPrivateDirectory(const std::string& path) {
  // The mask of the process may only take from the mode, and of 0700 hardly does.
  return ::mkdir(path.c_str(), 0700) == 0 && ::chmod(path.c_str(), 0700) == 0;
}

bool PosixFiles::changeAttributes(const std::string& path, const std::string& groupOwner,
                                  std::uint32_t permissions) {
  const std::optional<Group> group = groupOrItsStandIn(*accounts_, groupOwner);
  // Permissions last: a change of the group clears some of them.
  return group && ::chown(path.c_str(), static_cast<uid_t>(-1), group->gid) == 0 &&
         ::chmod(path.c_str(), static_cast<mode_t>(permissions)) == 0;
}

Result<std::string, FileError> PosixFiles::read(const std::string& path,
                                                std::uint64_t limit) const {
  // Not blocking, or opening a FIFO would wait for somebody to write into it.
  const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) return errorOf(errno, "open", path);
  return readAll(file.get(), path, limit);
}

Result<std::string, FileError> PosixFiles::readContent(const std::string& path,
                                                       std::uint64_t limit) const {
  // What follows a NUL would not be looked at.
  if (path.find('\0') != std::string::npos) return errorOf(EINVAL, "open", path);
  const Descriptor file = openForReading(AT_FDCWD, path.c_str(), 0);
  if (!file.isOpen()) return errorOf(errno, "open", path);
  return readAll(file.get(), path, limit);
}

Result<int, FileError> PosixFiles::openContent(const std::string& path) const {
  if (path.find('\0') != std::string::npos) return errorOf(EINVAL, "open", path);
  Descriptor file = openForReading(AT_FDCWD, path.c_str(), 0);
  if (!file.isOpen()) return errorOf(errno, "open", path);
  struct stat status{};
  if (::fstat(file.get(), &status) != 0) return errorOf(errno, "stat", path);
  if (!S_ISREG(status.st_mode)) {
    return errorOf(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, "open", path);
  }
  return file.release();
}

std::optional<FileError> PosixFiles::writeAtomically(const std::string& path,
                                                     std::string_view bytes) {
  const std::string folder = folderOf(path);
  std::string temporary = folder + "/" + temporaryPrefix(path) + "XXXXXX";
  std::optional<FileError> error;
  {
    const FileDescriptor file(makeTemporary(temporary));
    if (!file) return errorOf(errno, "create a file beside", path);
    error = fill(file.get(), path, bytes);
  }
  if (!error && rename(temporary.c_str(), path.c_str()) != 0) {
    error = errorOf(errno, "replace", path);
  }
  if (error) {
    ::unlink(temporary.c_str());
    return error;
  }
  removeLeftovers(path);
  return syncFolder(folder);
}

std::optional<FileError> PosixFiles::fill(int descriptor, const std::string& path,
                                          std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = writeBytes(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errorOf(errno, "write a file beside", path);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  if (sync(descriptor) != 0) return errorOf(errno, "sync a file beside", path);
  return std::nullopt;
}

std::optional<FileError> PosixFiles::syncFolder(const std::string& folder) {
  const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // EINVAL: a file system that has nothing to sync in a folder.
  if (!directory || (sync(directory.get()) != 0 && errno != EINVAL)) {
    return errorOf(errno, "sync the folder", folder);
  }
  return std::nullopt;
}

std::optional<FileError> PosixFiles::keepAs(const std::string& path, const std::string& keptPath) {
  if (link(path.c_str(), keptPath.c_str()) == 0 || errno == EEXIST) return std::nullopt;
  const int number = errno;
  // A file system without hard links, or none left for this file.
  if (number != EPERM && number != EOPNOTSUPP && number != EMLINK) {
    return errorOf(number, "keep", path);
  }
  constexpr std::uint64_t kNoLimit = UINT64_MAX;
  const Result<std::string, FileError> bytes = read(path, kNoLimit);
  if (!bytes) return bytes.error();
  return writeAtomically(keptPath, *bytes);
}

std::optional<FileRights> PosixFiles::status(const std::string& path) const {
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileRights{status.st_uid, status.st_gid, status.st_mode & 07777U};
}

std::optional<Date> PosixFiles::modificationDate(const std::string& path) const {
  struct stat status{};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return dateFromTimespec(status.st_mtim);
}

bool PosixFiles::removeFile(const std::string& path) { return ::unlink(path.c_str()) == 0; }

bool PosixFiles::moveFile(const std::string& from, const std::string& to) {
  return rename(from.c_str(), to.c_str()) == 0;
}

int PosixFiles::makeTemporary(std::string& pathPattern) {
  return ::mkostemp(pathPattern.data(), O_CLOEXEC);  // exclusively, with mode 0600
}

ssize_t PosixFiles::writeBytes(int descriptor, const char* bytes, std::size_t count) {
  return ::write(descriptor, bytes, count);
}

int PosixFiles::sync(int descriptor) { return ::fsync(descriptor); }

int PosixFiles::rename(const char* from, const char* to) { return ::rename(from, to); }

int PosixFiles::link(const char* from, const char* to) { return ::link(from, to); }

}  // namespace vt
