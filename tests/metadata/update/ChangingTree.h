#pragma once

#include <fcntl.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "metadata/crawl/FolderOpener.h"
#include "metadata/engine/RandomFiles.h"
#include "metadata/live/FolderReader.h"
#include "metadata/update/FileChanges.h"

namespace vt {

/// Changes a tree of files at random, and tells what it has changed.
class ChangingTree {
 public:
  /// What is told of a file with several names.
  enum class Names { kAll, kOne };

  ChangingTree(std::string root, std::uint32_t seed, Names names = Names::kAll)
      : root_(std::move(root)), random_(seed), names_(names) {}

  /// Makes some changes. What they were is named by the paths of the moment when they were made.
  FileChanges change(std::uint32_t count) {
    changes_ = {};
    moves_.clear();
    links_.clear();
    linked_.clear();
    while (count-- > 0) changeOne();
    nameLostLinks();
    for (const auto& [inode, times] : moves_) {
      // What it was called meanwhile is a path that nobody can know any more.
      if (times > 1) changes_.trees.push_back(root_);
    }
    return changes_;
  }

 private:
  using Path = std::filesystem::path;

  std::uint32_t pick(std::uint32_t below) { return static_cast<std::uint32_t>(random_() % below); }

  static bool isFolder(const Path& path) {
    return std::filesystem::is_directory(std::filesystem::symlink_status(path));
  }
  std::vector<Path> all(bool folders) const {
    std::vector<Path> found;
    for (const Path& path : below(root_)) {
      if (isFolder(path) == folders) found.push_back(path);
    }
    return found;
  }
  /// Everything in and below a folder, whose access time stays what it is.
  static std::vector<Path> below(const Path& folder) {
    std::set<Path> found;
    std::vector<Path> pending = {folder};
    FolderReader reader;
    FolderOpener opener;
    while (!pending.empty()) {
      const Path at = pending.back();
      pending.pop_back();
      const Descriptor open = opener.open(at.native());
      reader.list(open.get(), [&](const char* name, EntryKind) {
        if (isFolder(at / name)) pending.push_back(at / name);
        found.insert(at / name);
      });
    }
    return {found.begin(), found.end()};
  }
  Path oneOf(const std::vector<Path>& paths) {
    return paths.empty() ? Path() : paths[pick(static_cast<std::uint32_t>(paths.size()))];
  }
  Path anyFolder() {
    std::vector<Path> folders = all(/*folders=*/true);
    folders.emplace_back(root_);
    return oneOf(folders);
  }
  Path newPath() {
    constexpr auto kNames = std::to_array<const char*>(
        {"report", "Report 2", "Größe", "a", "a-b", "ab.txt", "x.pdf", "日本語", ".hidden", "b.txt",
         "\xFF\xFE", "IMG.jpg", "note.app", "c.txt"});
    return anyFolder() / kNames[pick(kNames.size())];
  }

  void name(const Path& path) { changes_.entries.push_back(path.native()); }
  static ino_t inodeOf(const Path& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
  }
  /// Names of files whose new name is not there any more: nobody can know of which files it was.
  void nameLostLinks() {
    for (std::size_t at = 0; at < links_.size(); ++at) {
      if (inodeOf(links_[at]) == linked_[at]) continue;
      for (const Path& path : all(/*folders=*/false)) {
        if (inodeOf(path) == linked_[at]) name(path);
      }
    }
  }
  /// All names of the file, which share their status.
  void nameLinks(const Path& path) {
    name(path);
    if (names_ == Names::kOne) return;
    struct stat status{};
    if (::lstat(path.c_str(), &status) != 0 || S_ISDIR(status.st_mode) || status.st_nlink < 2) {
      return;
    }
    for (const Path& other : all(/*folders=*/false)) {
      struct stat there{};
      if (::lstat(other.c_str(), &there) == 0 && there.st_ino == status.st_ino) name(other);
    }
  }
  void nameLinksBelow(const Path& path) {
    nameLinks(path);
    if (!isFolder(path) || names_ == Names::kOne) return;
    for (const Path& inside : below(path)) {
      struct stat status{};
      ::lstat(inside.c_str(), &status);
      if (status.st_nlink > 1 && !S_ISDIR(status.st_mode)) nameLinks(inside);
    }
  }

  void changeOne() {
    std::error_code ignored;
    const Path file = oneOf(all(/*folders=*/false));
    switch (names_ == Names::kOne && pick(3) == 0 ? 12 : pick(16)) {
      case 0:
      case 1: {
        const Path path = newPath();
        // What is behind a link has another path, and a pipe would wait for a reader.
        const std::filesystem::file_status status = std::filesystem::symlink_status(path);
        if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return;
        nameLinks(path);
        std::ofstream(path) << "budget " << random_();
        return;
      }
      case 2: {
        const Path top = newPath();
        if (std::filesystem::is_symlink(top)) return;  // what is behind it has another path
        const Path path = top / "deep" / "deeper";
        std::filesystem::create_directories(path, ignored);
        for (const Path& made : {path.parent_path().parent_path(), path.parent_path(), path}) {
          name(made);
        }
        std::ofstream(path / "inside.txt") << "report";
        name(path / "inside.txt");
        return;
      }
      case 3:
        if (file.empty() ||
            !std::filesystem::is_regular_file(std::filesystem::symlink_status(file))) {
          return;
        }
        nameLinks(file);
        std::ofstream(file, std::ios::app) << " Budget";
        return;
      case 4:
      case 5:
        rename(file, newPath());
        return;
      case 6:
      case 7:
        rename(oneOf(all(/*folders=*/true)), newPath());
        return;
      case 8:
        if (file.empty()) return;
        nameLinks(file);
        std::filesystem::remove(file, ignored);
        return;
      case 9: {
        const Path folder = oneOf(all(/*folders=*/true));
        if (folder.empty() || pick(2) == 0) return;
        nameLinksBelow(folder);
        std::filesystem::remove_all(folder, ignored);
        if (pick(2) == 0) return;
        // The next folder mostly has the inode number of the one that has just gone.
        const Path again = pick(2) == 0 ? folder : newPath();
        if (std::filesystem::is_symlink(again)) return;
        name(again);
        std::filesystem::create_directories(again / "again", ignored);
        name(again / "again");
        return;
      }
      case 10: {
        const Path path = pick(3) == 0 ? oneOf(all(/*folders=*/true)) : file;
        if (path.empty() || std::filesystem::is_symlink(path)) return;
        nameLinks(path);
        // Most folders stay open, or nothing below would ever be found.
        ::chmod(path.c_str(), isFolder(path) && pick(3) != 0 ? 0755 : pick(512));
        return;
      }
      case 11: {
        const Path path = pick(3) == 0 ? oneOf(all(/*folders=*/true)) : file;
        if (path.empty()) return;
        nameLinks(path);
        if (::lchown(path.c_str(), RandomFiles::kFirstUid + pick(RandomFiles::kUsers),
                     RandomFiles::kFirstGid + pick(RandomFiles::kGroups)) != 0) {
          throw std::runtime_error("chown " + path.native());
        }
        return;
      }
      case 12: {
        const Path path = newPath();
        if (file.empty() || ::link(file.c_str(), path.c_str()) != 0) return;
        nameLinks(path);
        links_.push_back(path);
        linked_.push_back(inodeOf(path));
        return;
      }
      case 13: {
        const Path path = newPath();
        if (::symlink("..", path.c_str()) == 0) name(path);
        return;
      }
      case 14: {
        const Path path = pick(3) == 0 ? oneOf(all(/*folders=*/true)) : file;
        if (path.empty() || std::filesystem::is_symlink(path)) return;
        nameLinks(path);
        giveAcl(path);
        return;
      }
      default: {
        const Path path = pick(3) == 0 ? oneOf(all(/*folders=*/true)) : file;
        if (path.empty()) return;
        nameLinks(path);
        constexpr auto kOffsets = std::to_array<std::int64_t>({86400, 0, -45000, 90'000'000});
        const timespec time{RandomFiles::kNow + kOffsets[pick(kOffsets.size())], 0};
        const timespec times[2] = {time, time};
        ::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW);
      }
    }
  }

  void rename(const Path& from, const Path& to) {
    if (from.empty()) return;
    const bool movesFolder = isFolder(from);
    struct stat status{};
    ::lstat(from.c_str(), &status);
    nameLinks(from);
    nameLinks(to);
    if (::rename(from.c_str(), to.c_str()) == 0 && movesFolder) ++moves_[status.st_ino];
  }

  void giveAcl(const Path& path) {
    const std::string text = std::string("u::rwx,g::r-x,o::---,m::r-x,u:") +
                             std::to_string(RandomFiles::kFirstUid + pick(RandomFiles::kUsers)) +
                             (pick(2) == 0 ? ":r-x" : ":---");
    acl_t list = acl_from_text(text.c_str());
    acl_set_file(path.c_str(), ACL_TYPE_ACCESS, list);
    acl_free(list);
  }

  std::string root_;
  std::mt19937 random_;
  Names names_;
  FileChanges changes_;
  std::map<ino_t, int> moves_;  // of folders
  std::vector<Path> links_;     // that were made, and of which file each was
  std::vector<ino_t> linked_;
};

}  // namespace vt
