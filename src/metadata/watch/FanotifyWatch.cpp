#include "metadata/watch/FanotifyWatch.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/fanotify.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <span>
#include <utility>

#include "metadata/crawl/IndexRoots.h"
#include "metadata/live/FileStatus.h"

namespace vt {
namespace {

constexpr std::uint64_t kEvents =
    FAN_CREATE | FAN_DELETE | FAN_RENAME | FAN_CLOSE_WRITE | FAN_MODIFY | FAN_ATTRIB | FAN_ONDIR;
constexpr std::size_t kBufferBytes = std::size_t{1} << 16;
// So that a storm does not keep who reads from publishing: some 100,000 events.
constexpr int kMostReads = 100;
// Some 10 MB.
constexpr std::size_t kMostHandles = 65'536;

std::string textOf(int number) { return std::strerror(number); }

std::string numberOfFileSystem(int folder) {
  struct statfs system{};
  if (fstatfs(folder, &system) != 0) return {};
  return {reinterpret_cast<const char*>(&system.f_fsid), sizeof system.f_fsid};
}

/// Opens the folder that a handle names, if it is still there.
Descriptor openHandle(int mount, std::string_view handle) {
  alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> bytes{};
  handle.copy(bytes.data(), bytes.size());
  return Descriptor(
      ::open_by_handle_at(mount, reinterpret_cast<file_handle*>(bytes.data()), O_PATH | O_CLOEXEC));
}

/// Why this process can't ask which folder a handle means; "" when it can.
std::string whyNoHandles(int folder) {
  alignas(file_handle) std::array<char, sizeof(file_handle) + MAX_HANDLE_SZ> bytes{};
  auto* const handle = reinterpret_cast<file_handle*>(bytes.data());
  handle->handle_bytes = MAX_HANDLE_SZ;
  int mount = 0;
  if (::name_to_handle_at(folder, "", handle, &mount, AT_EMPTY_PATH) != 0) return textOf(errno);
  return openHandle(folder, {bytes.data(), bytes.size()}).isOpen() ? "" : textOf(errno);
}

/// Where the link in /proc says that an open folder is; nothing, and errno, when it cannot say.
std::optional<std::string> linkBehind(int folder) {
  std::array<char, PATH_MAX> buffer;
  const std::string link = fmt::format("/proc/self/fd/{}", folder);
  const ssize_t count = ::readlink(link.c_str(), buffer.data(), buffer.size());
  if (count <= 0) return std::nullopt;
  if (buffer[0] != '/') {
    errno = ENOENT;
    return std::nullopt;
  }
  return std::string(buffer.data(), static_cast<std::size_t>(count));
}

}  // namespace

Result<bool, std::string> FanotifyWatch::restart(WatchInstant now) {
  now_ = now;
  handles_.clear();
  mounts_.clear();
  // The kernel keeps at most 16,384 events, as the administrator sets it: a process that does not
  // get to read them must not take all memory.
  group_ = Descriptor(::fanotify_init(
      FAN_CLASS_NOTIF | FAN_CLOEXEC | FAN_NONBLOCK | FAN_REPORT_DFID_NAME, O_RDONLY | O_CLOEXEC));
  if (!group_.isOpen()) return "fanotify cannot be used: " + textOf(errno);
  static_cast<void>(table_.hasChanged());
  for (const Mount& mount : mountsSeen(table_.read(), scope())) {
    MountedSystem system = watch(mount);
    const bool holdsRoot = std::ranges::any_of(
        scope().roots, [&](const std::string& root) { return isInFolder(root, mount.point); });
    if (!system.failure.empty() && holdsRoot) {
      group_.close();
      return fmt::format("fanotify cannot watch {} ({}): {}", mount.point, mount.type,
                         system.failure);
    }
    mounts_.push_back(std::move(system));
  }
  return true;
}

FanotifyWatch::MountedSystem FanotifyWatch::watch(const Mount& mount) {
  MountedSystem system{mount, {}, {}};
  const Descriptor folder = opener_.open(mount.point);
  if (!folder.isOpen()) {
    system.failure = textOf(errno);
    return system;
  }
  if (!fileSystems_.holdsFiles(mount.device, folder.get())) return system;  // nothing to be seen
  system.fileSystem = numberOfFileSystem(folder.get());
  if (::fanotify_mark(group_.get(), FAN_MARK_ADD | FAN_MARK_FILESYSTEM, kEvents, folder.get(),
                      nullptr) != 0) {
    system.failure = textOf(errno);
  } else {
    system.failure = whyNoHandles(folder.get());
  }
  return system;
}

void FanotifyWatch::lookAtMounts(WatchInstant now) {
  const std::vector<Mount> seen = mountsSeen(table_.read(), scope());
  handles_.forgetPlaces();
  std::erase_if(mounts_, [&](const MountedSystem& system) {
    const bool isGone = std::ranges::find(seen, system.mount) == seen.end();
    if (isGone) collector().addTreeAt(system.mount.point, now);
    return isGone;
  });
  for (const Mount& mount : seen) {
    if (std::ranges::find(mounts_, mount, &MountedSystem::mount) != mounts_.end()) continue;
    mounts_.push_back(watch(mount));
    collector().addTreeAt(mount.point, now);
  }
}

bool FanotifyWatch::drain(WatchInstant now) {
  now_ = now;
  if (table_.hasChanged() || std::exchange(mayMountsHaveMoved_, false)) lookAtMounts(now);
  std::array<char, kBufferBytes> buffer;
  for (int reads = 0; reads < kMostReads; ++reads) {
    const ssize_t count = ::read(group_.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return true;
    const bool isUnderstood =
        readFanotifyEvents(std::span(buffer.data(), static_cast<std::size_t>(count)),
                           [&](const FanotifyEvent& event) { takeEvent(event, now); });
    if (!isUnderstood) collector().addEverything(now);
  }
  return false;
}

void FanotifyWatch::takeEvent(const FanotifyEvent& event, WatchInstant now) {
  if ((event.mask & FAN_Q_OVERFLOW) != 0) {
    ++overflows_;
    handles_.forgetPlaces();
    collector().addEverything(now);
    return;
  }
  if (!event.name) return;  // of a file that has no name any more, or another one that is told of
  const std::string_view name = event.name->name == "." ? "" : event.name->name;
  const bool isFolder = (event.mask & FAN_ONDIR) != 0;
  const WatchedFolder folder = numberOf(*event.name);
  if ((event.mask & FAN_RENAME) != 0 && event.newName) {
    const WatchedFolder to = numberOf(*event.newName);
    if (isFolder) {
      handles_.forgetPlaces();
      mayMountsHaveMoved_ = true;
      folderMoved(folder, name, to, event.newName->name, now);
      return;
    }
    if (!isOutside(to)) collector().addEntry(to, event.newName->name, now);
  }
  if (isOutside(folder)) return;
  if (isFolder && (event.mask & (FAN_CREATE | FAN_DELETE)) != 0) {
    // A folder that has just been made may be the same file, by its number, as one that has gone.
    collector().addTree(folder, name, now);
  } else if ((event.mask & ~static_cast<std::uint64_t>(FAN_ONDIR)) == FAN_MODIFY) {
    collector().addWritten(folder, name, now);
  } else {
    collector().addEntry(folder, name, now);
  }
}

bool FanotifyWatch::isOutside(WatchedFolder folder) {
  // Found out at the first event, so that what is busy outside puts nothing off that is inside.
  if (handles_.placeOf(folder) == FolderHandles::Place::kUnknown) pathsOf(folder);
  return handles_.placeOf(folder) == FolderHandles::Place::kOutside;
}

std::vector<std::string> FanotifyWatch::pathsOf(WatchedFolder folder) {
  const FanotifyFolder parts = partsOf(handles_.handleOf(folder));
  std::vector<std::string> paths;
  isPathUnsure_ = false;
  for (const MountedSystem& system : mounts_) {
    if (system.fileSystem != parts.fileSystem) continue;
    // Opened for each question: what is kept open can't be unmounted.
    const Descriptor mount = opener_.open(system.mount.point);
    if (!mount.isOpen()) isPathUnsure_ = true;
    const Descriptor found = mount.isOpen() ? openHandle(mount.get(), parts.handle) : Descriptor();
    if (!found.isOpen()) continue;
    std::optional<std::string> path = pathBehind(found);
    const bool isKnown = std::ranges::find(paths, path) != paths.end();
    if (path && !isKnown) paths.push_back(*std::move(path));
  }
  std::erase_if(paths, [&](const std::string& path) { return !scope().holds(path); });
  const bool isInside = !paths.empty() || isPathUnsure_;
  handles_.setPlace(folder,
                    isInside ? FolderHandles::Place::kInside : FolderHandles::Place::kOutside);
  return paths;
}

std::optional<std::string> FanotifyWatch::pathBehind(const Descriptor& folder) {
  std::optional<std::string> path = linkBehind(folder.get());
  if (!path && errno == ENAMETOOLONG) {
    // Longer than the system tells: the nearest folder above of which it does is a tree.
    Descriptor above;
    for (int at = folder.get(); !path && errno == ENAMETOOLONG; at = above.get()) {
      above = Descriptor(::openat(at, "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
      if (!above.isOpen()) return std::nullopt;
      path = linkBehind(above.get());
    }
    if (path) collector().addTreeAt(*std::move(path), now_);
    isPathUnsure_ = true;
    return std::nullopt;
  }
  if (!path) return std::nullopt;
  // The link also speaks of folders that are gone, hidden below a mount, or elsewhere in the file
  // system than what is mounted here.
  const std::optional<FileStatus> meant = statusOf(folder.get());
  const Descriptor found = opener_.find(*path);
  const std::optional<FileStatus> there =
      found.isOpen() ? statusOf(found.get()) : std::optional<FileStatus>();
  if (meant && there && meant->isSameFileAs(*there)) return path;
  isPathUnsure_ = true;  // it may just be moving
  return std::nullopt;
}

void FanotifyWatch::forgetFolders() {
  if (handles_.size() > kMostHandles) handles_.clear();
}

std::vector<std::string> FanotifyWatch::unwatched() const {
  std::vector<std::string> folders;
  for (const MountedSystem& system : mounts_) {
    if (!system.isSeen()) folders.push_back(system.mount.point);
  }
  return outermostRoots(std::move(folders));
}

std::string FanotifyWatch::whyUnwatched() const {
  for (const MountedSystem& system : mounts_) {
    if (system.isSeen()) continue;
    return fmt::format("{} ({}): {}", system.mount.point, system.mount.type,
                       system.failure.empty() ? kOtherMachines : system.failure);
  }
  return "";
}

void FanotifyWatch::watchUnwatched(WatchInstant /*now*/) {
  for (MountedSystem& system : mounts_) {
    if (!system.failure.empty()) system = watch(system.mount);
  }
}

WatchCounts FanotifyWatch::counts() const {
  WatchCounts counts;
  for (const MountedSystem& system : mounts_) {
    if (system.failure.empty() && !system.fileSystem.empty()) ++counts.watched;
    if (!system.isSeen()) ++counts.unwatched;
  }
  counts.waiting = collector().size();
  counts.overflows = overflows_;
  return counts;
}

}  // namespace vt
