#pragma once

#include <string>
#include <vector>

namespace vt {

/// Everything that confined code must be refused. `readable` is a file that everybody may read and
/// write, `newFile` one that is not there yet.
inline std::vector<std::string> refusedMisdeeds(const std::string& readable,
                                                const std::string& newFile) {
  return {
      "read /etc/passwd",
      "read /etc/hostname",
      "read /proc/self/maps",
      "read /proc/self/mem",
      "read " + readable,
      "write " + readable,
      "write " + newFile,
      "write /dev/shm/new",
      "write /tmp/new",
      "truncate " + readable,
      "write-input",
      "unlink " + readable,
      "symlink " + newFile,
      "chmod " + readable,
      "exec",
      "fork",
      "vfork",
      "socket",
      "unix-socket",
      "ptrace",
      "kill",
      "kill-by-thread",
      "many-threads",
      "regain-root",
      "unshare",
      "mount",
      "keyctl",
      "bpf",
      "io-uring",
      "raise-limit",
      "leak",
      "who",
  };
}

}  // namespace vt
