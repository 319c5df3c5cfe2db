#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/ReadFile.h"

namespace vt {

/// The processes called `name`, of which 15 bytes are known, that this process has started, or that
/// a process which it has started has.
inline std::vector<pid_t> descendants(const std::string& name) {
  std::map<pid_t, pid_t> parents;
  std::vector<pid_t> found;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const pid_t pid = std::atoi(entry.path().filename().c_str());
    // "PID (NAME) STATE PARENT …"
    const std::string status = pid > 0 ? readFile(entry.path() / "stat") : "";
    const std::size_t end = status.rfind(')');
    if (end == status.npos) continue;
    parents[pid] = std::atoi(status.c_str() + end + 4);
    if (status.find("(" + name.substr(0, 15) + ")") != status.npos) found.push_back(pid);
  }
  std::erase_if(found, [&](pid_t pid) {
    while (pid > 0 && pid != getpid()) pid = parents[pid];
    return pid != getpid();
  });
  return found;
}

}  // namespace vt
