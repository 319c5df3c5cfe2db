#include "metadata/watch/RememberedFiles.h"

#include <dirent.h>
#include <sys/xattr.h>

#include <algorithm>

#include "metadata/crawl/IndexRoots.h"

namespace vt {

bool RememberedFiles::look(const std::string& path, File& file) {
  struct stat status{};
  if (lstat(path.c_str(), &status) != 0) return false;
  file.inode = status.st_ino;
  file.mode = status.st_mode;
  file.owner = status.st_uid;
  file.group = status.st_gid;
  // What a folder's own record takes up, and when that last changed, is of no interest here.
  file.size = S_ISDIR(status.st_mode) ? 0 : static_cast<std::uint64_t>(status.st_size);
  file.modified =
      S_ISDIR(status.st_mode) ? 0 : status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec;
  char list[1024];
  const ssize_t bytes = lgetxattr(path.c_str(), "system.posix_acl_access", list, sizeof list);
  file.acl.assign(list, static_cast<std::size_t>(std::max<ssize_t>(bytes, 0)));
  return true;
}

void RememberedFiles::crawl(const std::string& folder, Files& files) {
  DIR* const listing = opendir(folder.c_str());
  if (listing == nullptr) return;
  while (const dirent* const entry = readdir(listing)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    const std::string path = folder + "/" + name;
    File file;
    if (!look(path, file)) continue;
    files[path] = file;
    if (file.isFolder()) crawl(path, files);
  }
  closedir(listing);
}

void RememberedFiles::forget(const std::string& path) {
  for (auto at = files_.lower_bound(path); at != files_.end() && at->first.starts_with(path);) {
    at = isInFolder(at->first, path) ? files_.erase(at) : std::next(at);
  }
}

void RememberedFiles::lookAtEntry(const std::string& path) {
  File now;
  if (!look(path, now)) {
    forget(path);
    return;
  }
  const auto known = files_.find(path);
  const bool isSame = known != files_.end() && known->second.inode == now.inode &&
                      known->second.isFolder() == now.isFolder();
  if (!isSame) forget(path);
  files_[path] = now;
  if (isSame || !now.isFolder()) return;
  if (const auto moved = moved_.find(now.inode); moved != moved_.end()) {
    for (const auto& [below, file] : moved->second) files_[path + below] = file;
  } else {
    crawl(path, files_);
  }
}

void RememberedFiles::lookAtFolder(const std::string& path) {
  std::vector<std::string> known;
  for (auto at = files_.lower_bound(path); at != files_.end() && at->first.starts_with(path);
       ++at) {
    if (folderAbove(at->first) == path) known.push_back(at->first);
  }
  Files found;
  crawl(path, found);
  for (const auto& [entry, file] : found) {
    if (folderAbove(entry) == path) known.push_back(entry);
  }
  for (const std::string& entry : known) lookAtEntry(entry);
}

void RememberedFiles::apply(const FileChanges& changes) {
  moved_.clear();
  std::vector<std::string> entries = changes.entries;
  // The deepest first, so that each folder that was moved is remembered without those moved out.
  std::ranges::sort(entries, std::greater(), &std::string::size);
  for (const std::string& path : entries) {
    const auto known = files_.find(path);
    File now;
    const bool isThere = look(path, now);
    if (known == files_.end() || !known->second.isFolder()) continue;
    if (isThere && known->second.inode == now.inode) continue;
    Files& below = moved_[known->second.inode];
    for (const auto& [each, file] : files_) {
      if (each != path && isInFolder(each, path)) below[each.substr(path.size())] = file;
    }
    forget(path);
  }
  std::ranges::reverse(entries);
  for (const std::string& path : entries) lookAtEntry(path);
  for (const std::string& path : changes.folders) lookAtFolder(path);
  // Last, since until then what is known is known by the old paths.
  for (const std::string& tree : changes.trees) {
    forget(tree);
    if (File file; look(tree, file)) {
      if (tree != root_) files_[tree] = file;
      if (file.isFolder()) crawl(tree, files_);
    }
  }
}

std::string RememberedFiles::difference() const {
  Files now;
  crawl(root_, now);
  std::string text;
  for (const auto& [path, file] : now) {
    const auto known = files_.find(path);
    if (known == files_.end()) {
      text += " missed: " + path;
    } else if (known->second != file) {
      text += " changed: " + path;
    }
  }
  for (const auto& [path, file] : files_) {
    if (!now.contains(path)) text += " gone: " + path;
  }
  return text;
}

}  // namespace vt
