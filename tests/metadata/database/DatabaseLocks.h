#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace vt {

/// Whether this process holds a lock on the database file, as another one sees it. That is what
/// keeps others from taking the log of a database away that is in use.
inline bool isLockedHere(const std::string& path) {
  const pid_t other = ::fork();
  if (other == 0) {
    const int file = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    // Where SQLite keeps the locks of those that read.
    struct flock lock{};
    lock.l_type = F_WRLCK;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0x40000002;
    lock.l_len = 510;
    const bool isTold = file >= 0 && ::fcntl(file, F_GETLK, &lock) == 0;
    ::_exit(isTold && lock.l_type == F_RDLCK && lock.l_pid == ::getppid() ? 0 : 1);
  }
  int status = 1;
  return other > 0 && ::waitpid(other, &status, 0) == other && status == 0;
}

}  // namespace vt
