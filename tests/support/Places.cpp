#include "support/Places.h"

namespace vt {

std::string resourceFolder() { return VT_SOURCE_FOLDER "/resources"; }

std::string resourcePath(std::string_view name) {
  return resourceFolder().append("/").append(name);
}

std::string testDataFolder() { return VT_SOURCE_FOLDER "/tests/data"; }

std::string builtProgram(std::string_view name) {
  return std::string(VT_BUILD_FOLDER "/bin/").append(name);
}

std::string testProgram(std::string_view name) {
  return std::string(VT_BUILD_FOLDER "/tests/").append(name);
}

}  // namespace vt
