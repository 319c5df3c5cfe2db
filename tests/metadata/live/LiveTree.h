#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "metadata/live/Descriptor.h"
#include "support/TemporaryFolder.h"

namespace vt {

/// A folder of files for one test.
class LiveTree {
 public:
  std::string path() const { return folder_.path(); }
  std::string operator/(std::string_view below) const { return path() + "/" + std::string(below); }

  std::string file(std::string_view below, std::string_view text = {}) const {
    const std::string path = *this / below;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
    if (!std::filesystem::exists(path)) throw std::runtime_error("not made: " + path);
    return path;
  }
  std::string folder(std::string_view below) const {
    std::filesystem::create_directories(*this / below);
    return *this / below;
  }
  void link(std::string_view below, std::string_view target) const {
    std::filesystem::create_symlink(target, *this / below);
  }

 private:
  TemporaryFolder folder_;
};

/// Makes `levels` folders called `name`, each in the one before, below the open folder. Paths may
/// grow longer than the system takes. Calls `inEach` with each new folder's descriptor.
template <class InEach>
void makeDeepFolders(int folder, const std::string& name, int levels, InEach inEach) {
  Descriptor last(dup(folder));
  for (int i = 0; i < levels; ++i) {
    if (mkdirat(last.get(), name.c_str(), 0755) != 0) throw std::runtime_error("no folder");
    last = Descriptor(openat(last.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    inEach(last.get());
  }
}

/// Makes an empty file in an open folder.
inline void makeFileIn(int folder, const char* name) {
  Descriptor(openat(folder, name, O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
}

}  // namespace vt
