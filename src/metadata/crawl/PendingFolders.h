#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/crawl/CrawlSink.h"

namespace vt {

/// A folder that is to be walked next.
struct PendingFolder {
  CrawledFolderId id = kNoCrawledFolder;
  CrawledFolderId before = kNoCrawledFolder;  ///< what an earlier crawl called it
  // To know it again when it is opened.
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool isMountPoint = false;  ///< another file system than that of the folder it is in begins here
  std::size_t place = 0;      ///< in the tree of names, for PendingFolders
  std::string path;           ///< absolute
};

/// The folders yet to be walked: last in, first out, so that their number stays small in most
/// trees. Holds each name once, and no path, which deep trees would make long and many.
class PendingFolders {
 public:
  bool isEmpty() const { return pending_.empty(); }

  /// Adds a folder by its absolute path; `root.place` is of no account.
  void addRoot(const PendingFolder& root);
  /// Adds those of the entries of `parent` that the sink named.
  void addFolders(const PendingFolder& parent, std::span<const CrawledEntry> entries);
  /// Takes one out; there must be one.
  PendingFolder take();

 private:
  static constexpr std::size_t kNoPlace = static_cast<std::size_t>(-1);

  struct Name {
    std::size_t parent;  // a place, or kNoPlace for a root, whose name is its path
    std::size_t end;     // in names_; it begins where the one before it ends
  };

  std::size_t addName(std::size_t parent, std::string_view name);
  std::string_view nameAt(std::size_t place) const;
  std::string pathOf(std::size_t place) const;

  std::vector<PendingFolder> pending_;  // without paths
  std::vector<Name> tree_;
  std::string names_;
};

}  // namespace vt
