#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <functional>
#include <stdexcept>
#include <string>

#include "support/InChildProcess.h"

namespace vt {

/// What withMounts() answers where a process may mount nothing.
inline constexpr const char* kNoMounts = "no mounts";

/// What `work` answers where mounts are seen by nobody else and end with it.
inline std::string withMounts(const std::function<std::string()>& work) {
  return inChildProcess([&]() -> std::string {
    if (unshare(CLONE_NEWNS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
      return kNoMounts;
    }
    return work();
  });
}

inline void mountAt(const std::string& folder, const char* type, const char* options = nullptr) {
  if (mount("none", folder.c_str(), type, 0, options) != 0) {
    throw std::runtime_error(std::string("no mount of ") + type);
  }
}

inline void bindMount(const std::string& from, const std::string& to) {
  if (mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
    throw std::runtime_error("no bind mount");
  }
}

}  // namespace vt
