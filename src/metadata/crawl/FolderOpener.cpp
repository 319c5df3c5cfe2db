#include "metadata/crawl/FolderOpener.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace vt {
namespace {

constexpr int kFolder = O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr std::size_t kLongestPath = PATH_MAX - 1;  // the kernel counts the NUL
// An anchor is where it was found for so many folders at most, so that one that was moved does not
// serve for long.
constexpr int kMostAnchorUses = 256;

/// The last place not beyond `end` where `path` can be cut: at the end of a name.
std::size_t cutBefore(std::string_view path, std::size_t end) { return path.rfind('/', end); }

}  // namespace

Descriptor openFolderBelow(int from, const char* path, int flags) {
  struct open_how how{};
  how.flags = static_cast<std::uint64_t>(kFolder | flags);
  how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  Descriptor folder(static_cast<int>(syscall(SYS_openat2, from, path, &how, sizeof how)));
  // A filter may say EPERM to what it does not know; the kernel says it only to O_NOATIME.
  const bool isUnknown = errno == ENOSYS || (errno == EPERM && (flags & O_NOATIME) == 0);
  return folder.isOpen() || !isUnknown ? std::move(folder) : openFolderByNames(from, path, flags);
}

Descriptor openFolderByNames(int from, const char* path, int flags) {
  Descriptor at;
  int folder = from;
  std::string name;
  for (const char* slash = std::strchr(path, '/'); slash; slash = std::strchr(path, '/')) {
    name.assign(path, slash);
    at = Descriptor(openat(folder, name.c_str(), kFolder | O_PATH));
    if (!at.isOpen()) return at;
    folder = at.get();
    path = slash + 1;
  }
  return Descriptor(openat(folder, path, kFolder | flags));
}

FolderOpener::FolderOpener() : root_(::open("/", kFolder | O_PATH)) {}

Descriptor FolderOpener::open(std::string_view path) {
  Descriptor folder = open(path, O_RDONLY | O_NOATIME);
  // Only the owner may leave the access time alone; the kernel then moves it at most once a day.
  if (!folder.isOpen() && errno == EPERM) folder = open(path, O_RDONLY);
  return folder;
}

Descriptor FolderOpener::find(std::string_view path) { return open(path, O_PATH); }

Descriptor FolderOpener::open(std::string_view path, int flags) {
  const int from = anchorFor(path);
  if (from < 0) return {};
  if (from == anchor_.get()) path.remove_prefix(anchorPath_.size());
  if (path.starts_with('/')) path.remove_prefix(1);
  const std::string rest(path.empty() ? "." : path);
  return openFolderBelow(from, rest.c_str(), flags);
}

int FolderOpener::anchorFor(std::string_view path) {
  if (path.size() <= kLongestPath) return root_.get();
  // The longest part that leaves a rest which the system takes, in steps that depend on nothing but
  // the path's beginning, so that folders side by side share their anchor.
  const bool serves =
      anchor_.isOpen() && path.starts_with(anchorPath_) && path[anchorPath_.size()] == '/' &&
      path.size() - anchorPath_.size() <= kLongestPath && anchorUses_ < kMostAnchorUses;
  if (!serves) {
    anchor_.close();
    std::size_t at = 0;
    int from = root_.get();
    while (path.size() - at > kLongestPath) {
      const std::size_t end = cutBefore(path, at + kLongestPath / 2);
      const std::string part(path.substr(at + 1, end - at - 1));
      anchor_ = openFolderBelow(from, part.c_str(), O_PATH);
      if (!anchor_.isOpen()) return -1;
      from = anchor_.get();
      at = end;
    }
    anchorPath_ = path.substr(0, at);
    anchorUses_ = 0;
  }
  ++anchorUses_;
  return anchor_.get();
}

}  // namespace vt
