#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "metadata/update/FileChanges.h"

namespace vt {

/// What is known of the files below a folder, kept up to date by looking at what is said to have
/// changed, and at nothing else.
class RememberedFiles {
 public:
  struct File {
    std::uint64_t inode = 0;
    std::uint32_t mode = 0;
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds
    std::string acl;            // bytes

    bool operator==(const File&) const = default;
    bool isFolder() const { return S_ISDIR(mode); }
  };

  /// Looks at everything below `root`.
  explicit RememberedFiles(std::string root) : root_(std::move(root)) { crawl(root_, files_); }

  /// Looks at what is named, in the laziest way that its meaning allows: a folder that is found
  /// under another path is believed to hold what it held.
  void apply(const FileChanges& changes);

  /// What differs from what there is now, in words; "" when nothing does.
  std::string difference() const;

 private:
  using Files = std::map<std::string, File>;  // by path

  static bool look(const std::string& path, File& file);
  static void crawl(const std::string& folder, Files& files);
  void forget(const std::string& path);
  void lookAtEntry(const std::string& path);
  void lookAtFolder(const std::string& path);

  std::string root_;
  Files files_;
  std::map<std::uint64_t, Files> moved_;  // by inode; paths are behind that of the folder
};

}  // namespace vt
