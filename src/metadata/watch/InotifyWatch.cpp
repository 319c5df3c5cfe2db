#include "metadata/watch/InotifyWatch.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "metadata/crawl/IndexRoots.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/LiveFile.h"

namespace vt {
namespace {

constexpr std::uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                  IN_CLOSE_WRITE | IN_MODIFY | IN_ATTRIB | IN_ONLYDIR |
                                  IN_EXCL_UNLINK;
constexpr std::size_t kBufferBytes = std::size_t{1} << 16;
// So that a storm does not keep who reads from publishing: some 100,000 events.
constexpr int kMostReads = 50;
// The two halves of a move are told within microseconds of each other.
constexpr std::chrono::milliseconds kLongestMove{100};

}  // namespace

Result<bool, std::string> InotifyWatch::restart(WatchInstant /*now*/) {
  static_cast<void>(table_.hasChanged());
  if (rebuild()) return true;
  return fmt::format("inotify cannot be used: {}", std::strerror(errno));
}

bool InotifyWatch::rebuild() {
  // Closing takes all watches away, far faster than one by one.
  inotify_ = Descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  tree_ = std::make_unique<WatchedTree>();
  moving_.clear();
  lost_.clear();
  starved_.clear();
  mounts_ = mountsSeen(table_.read(), scope());
  if (!inotify_.isOpen()) return false;
  for (const std::string& root : scope().roots) watchFrom(tree_->addRoot(root));
  return true;
}

void InotifyWatch::watchFrom(WatchedFolder folder) {
  // Level by level, so that the folders on top have watches when these run out.
  std::vector<WatchedFolder> found{folder};
  for (std::size_t i = 0; i < found.size(); ++i) watchOne(found[i], found);
}

void InotifyWatch::watchOne(WatchedFolder folder, std::vector<WatchedFolder>& found) {
  const std::optional<std::string> path = tree_->pathOf(folder);
  if (!path) {
    lost_.insert(folder);
    return;
  }
  const auto mount = std::ranges::find(mounts_, *path, &Mount::point);
  if (mount != mounts_.end()) {
    // Before it is opened, since that can wake an automounter.
    const Descriptor point = opener_.find(*path);
    if (!point.isOpen() || !fileSystems_.holdsFiles(mount->device, point.get())) return;
  }
  const Descriptor open = opener_.open(*path);
  if (!open.isOpen()) {
    const bool isGone = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
    if (isGone && tree_->parentOf(folder) != WatchedTree::kNone) lost_.insert(folder);
    return;
  }
  const int watch = addWatch(open.get());
  tree_->setWatch(folder, watch < 0 ? WatchedTree::kNotWatched : watch);
  if (watch >= 0) {
    starved_.erase(folder);
  } else if (errno == ENOSPC || errno == ENOMEM) {
    starvation_ = errno;
    starved_.insert(folder);
  }
  // Listed also when it is not watched: it is to be known how many these are.
  listFolders(folder, open.get(), *path, found);
}

int InotifyWatch::addWatch(int folder) {
  const std::string link = fmt::format("/proc/self/fd/{}", folder);
  return ::inotify_add_watch(inotify_.get(), link.c_str(), kEvents);
}

void InotifyWatch::listFolders(WatchedFolder folder, int open, const std::string& path,
                               std::vector<WatchedFolder>& found) {
  reader_.list(open, [&](const char* name, EntryKind kind) {
    if (kind == EntryKind::kUnknown) {
      const std::optional<FileStatus> status = statusOf(open, name);
      if (!status || !status->isFolder()) return;
    } else if (kind != EntryKind::kFolder) {
      return;
    }
    if (!scope().ignored.empty() && !scope().holds(joinPath(path, name))) return;
    WatchedFolder child = tree_->child(folder, name);
    const bool isWatched =
        child != WatchedTree::kNone && tree_->watchOf(child) != WatchedTree::kNotWatched;
    if (isWatched) return;
    if (child == WatchedTree::kNone) child = tree_->addChild(folder, name);
    found.push_back(child);
  });
}

void InotifyWatch::unwatch(WatchedFolder folder) {
  for (const int watch : tree_->remove(folder)) ::inotify_rm_watch(inotify_.get(), watch);
  if (!starved_.empty()) {
    std::erase_if(starved_, [this](WatchedFolder each) { return !tree_->holds(each); });
  }
}

void InotifyWatch::watchAnew(WatchedFolder parent, std::string_view name) {
  const WatchedFolder known = tree_->child(parent, name);
  if (known != WatchedTree::kNone) unwatch(known);
  watchFrom(tree_->addChild(parent, name));
}

WatchedFolder InotifyWatch::folderAt(std::string_view path) const {
  for (const std::string& root : scope().roots) {
    if (!isInFolder(path, root)) continue;
    WatchedFolder at = tree_->child(WatchedTree::kNone, root);
    std::string_view rest = path.substr(root == "/" ? 0 : root.size());
    while (at != WatchedTree::kNone && rest.size() > 1) {
      rest.remove_prefix(1);
      const std::string_view name = rest.substr(0, rest.find('/'));
      rest.remove_prefix(name.size());
      at = tree_->child(at, name);
    }
    return at;
  }
  return WatchedTree::kNone;
}

void InotifyWatch::lookAtMounts(WatchInstant now) {
  const std::vector<Mount> before = std::exchange(mounts_, mountsSeen(table_.read(), scope()));
  const auto watchPoint = [&](const Mount& mount) {
    if (!scope().holds(mount.point)) return;
    collector().addTreeAt(mount.point, now);
    const WatchedFolder folder = folderAt(mount.point);
    // A root that was mounted is another folder now: whoever gave it has to see to that.
    if (folder == WatchedTree::kNone || tree_->parentOf(folder) == WatchedTree::kNone) return;
    const std::size_t slash = mount.point.rfind('/');
    watchAnew(tree_->parentOf(folder), std::string_view(mount.point).substr(slash + 1));
  };
  for (const Mount& mount : before) {
    if (std::ranges::find(mounts_, mount) == mounts_.end()) watchPoint(mount);
  }
  for (const Mount& mount : mounts_) {
    if (std::ranges::find(before, mount) == before.end()) watchPoint(mount);
  }
}

bool InotifyWatch::drain(WatchInstant now) {
  if (table_.hasChanged()) lookAtMounts(now);
  alignas(inotify_event) std::array<char, kBufferBytes> buffer;
  bool isEmpty = false;
  for (int reads = 0; reads < kMostReads && !isEmpty && !hasOverflown_; ++reads) {
    const ssize_t count = ::read(inotify_.get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    isEmpty = count <= 0;
    if (!isEmpty) takeEvents(std::span(buffer.data(), static_cast<std::size_t>(count)), now);
  }
  if (std::exchange(hasOverflown_, false)) {
    // Folders may have come and gone unseen.
    ++overflows_;
    collector().addEverything(now);
    rebuild();
    return true;
  }
  if (isEmpty) {
    giveUpMoving(now);
    watchLost(now);
  }
  return isEmpty;
}

void InotifyWatch::takeEvents(std::span<const char> bytes, WatchInstant now) {
  while (bytes.size() >= sizeof(inotify_event)) {
    inotify_event event{};
    std::memcpy(&event, bytes.data(), sizeof event);
    const std::string_view padded(bytes.data() + sizeof event, event.len);
    takeEvent(event, padded.substr(0, padded.find('\0')), now);
    bytes = bytes.subspan(sizeof event + event.len);
  }
}

void InotifyWatch::takeEvent(const inotify_event& event, std::string_view name, WatchInstant now) {
  if ((event.mask & IN_Q_OVERFLOW) != 0) {
    hasOverflown_ = true;
    return;
  }
  if ((event.mask & IN_IGNORED) != 0) {
    tree_->forgetWatch(event.wd);
    return;
  }
  for (const WatchedFolder folder : tree_->foldersOf(event.wd)) {
    if (!tree_->holds(folder)) continue;  // what was done for another place of it took it away
    if ((event.mask & IN_ISDIR) != 0 && !name.empty()) {
      takeFolder(folder, event, name, now);
    } else if ((event.mask & IN_MODIFY) != 0) {
      collector().addWritten(folder, name, now);
    } else {
      collector().addEntry(folder, name, now);
    }
  }
}

void InotifyWatch::takeFolder(WatchedFolder parent, const inotify_event& event,
                              std::string_view name, WatchInstant now) {
  if (!scope().ignored.empty()) {
    const std::optional<std::string> path = tree_->pathOf(parent);
    if (path && !scope().holds(joinPath(*path, name))) return;
  }
  const WatchedFolder child = tree_->child(parent, name);
  if ((event.mask & IN_MOVED_FROM) != 0) {
    collector().addEntry(parent, name, now);
    if (child == WatchedTree::kNone) return;
    tree_->detach(child);
    moving_[event.cookie] = {child, parent, std::string(name), now};
    return;
  }
  if ((event.mask & IN_DELETE) != 0) {
    collector().addTree(parent, name, now);
    if (child != WatchedTree::kNone) unwatch(child);
    return;
  }
  if ((event.mask & IN_MOVED_TO) != 0) {
    const auto found = moving_.find(event.cookie);
    if (found != moving_.end()) {
      const Moving moving = std::move(found->second);
      moving_.erase(found);
      // What changed in it meanwhile had no path.
      const bool isKnown = moveIn(parent, name, moving);
      folderMoved(moving.parent, moving.name, parent, name, now, !isKnown || moving.since != now);
      if (!isKnown && tree_->holds(moving.parent)) {
        // Two folders that have changed places are told of as if the one had replaced the other.
        collector().addTree(moving.parent, moving.name, now);
        watchAnew(moving.parent, moving.name);
      }
      return;
    }
  }
  if ((event.mask & (IN_CREATE | IN_MOVED_TO)) != 0) {
    collector().addTree(parent, name, now);
    watchAnew(parent, name);
    return;
  }
  collector().addEntry(parent, name, now);
  const bool isUnwatched =
      child != WatchedTree::kNone && tree_->watchOf(child) == WatchedTree::kNotWatched;
  if (isUnwatched && !isStarved(child)) {
    // It may now be listed.
    collector().addTree(parent, name, now);
    watchFrom(child);
  }
}

bool InotifyWatch::moveIn(WatchedFolder parent, std::string_view name, const Moving& moving) {
  const WatchedFolder replaced = tree_->child(parent, name);
  if (replaced != WatchedTree::kNone) unwatch(replaced);
  if (!tree_->holds(moving.folder)) {
    watchFrom(tree_->addChild(parent, name));
    return false;
  }
  tree_->attach(moving.folder, parent, name);
  // A folder that was made, moved and made anew by the time it was to be watched is taken for the
  // other. The kernel knows which of them has which watch.
  const std::optional<std::string> path = tree_->pathOf(moving.folder);
  const Descriptor open = path ? opener_.open(*path) : Descriptor();
  const int watch = tree_->watchOf(moving.folder);
  if (open.isOpen() && watch != WatchedTree::kNotWatched && addWatch(open.get()) == watch) {
    return true;
  }
  watchAnew(parent, name);
  return false;
}

void InotifyWatch::giveUpMoving(WatchInstant now) {
  for (auto at = moving_.begin(); at != moving_.end();) {
    const bool hasLeft = now - at->second.since >= kLongestMove;
    if (hasLeft && tree_->holds(at->second.folder)) unwatch(at->second.folder);
    at = hasLeft ? moving_.erase(at) : std::next(at);
  }
}

void InotifyWatch::watchLost(WatchInstant now) {
  for (const WatchedFolder folder : std::exchange(lost_, {})) {
    if (!tree_->holds(folder)) continue;
    watchFrom(folder);
    if (!lost_.contains(folder)) {
      collector().addTree(folder, "", now);
    } else if (tree_->pathOf(folder)) {
      unwatch(folder);
      lost_.erase(folder);
    }
  }
}

std::vector<std::string> InotifyWatch::pathsOf(WatchedFolder folder) {
  std::optional<std::string> path = tree_->pathOf(folder);
  if (!path || !scope().holds(*path)) return {};
  return {*std::move(path)};
}

std::vector<std::string> InotifyWatch::unwatched() const {
  std::vector<std::string> folders;
  for (const WatchedFolder folder : starved_) {
    const WatchedFolder parent = tree_->parentOf(folder);
    if (parent != WatchedTree::kNone && isStarved(parent)) continue;
    if (std::optional<std::string> path = tree_->pathOf(folder)) folders.push_back(*path);
  }
  for (const Mount& mount : mounts_) {
    if (!isSharedByMachines(mount)) continue;
    for (const std::string& root : scope().roots) {
      folders.push_back(isInFolder(root, mount.point) ? root : mount.point);
    }
  }
  std::erase_if(folders, [this](const std::string& path) { return !scope().holds(path); });
  return outermostRoots(std::move(folders));
}

std::string InotifyWatch::whyUnwatched() const {
  if (!starved_.empty()) {
    return fmt::format(
        "there are no more watches ({}); fs.inotify.max_user_watches says how many "
        "a user may have",
        std::strerror(starvation_));
  }
  const auto shared = std::ranges::find_if(mounts_, isSharedByMachines);
  if (shared == mounts_.end()) return "";
  return fmt::format("{} ({}): {}", shared->point, shared->type, kOtherMachines);
}

void InotifyWatch::watchUnwatched(WatchInstant /*now*/) {
  const std::vector<WatchedFolder> folders(starved_.begin(), starved_.end());
  for (const WatchedFolder folder : folders) {
    if (tree_->holds(folder) && isStarved(folder)) watchFrom(folder);
  }
}

WatchCounts InotifyWatch::counts() const {
  WatchCounts counts;
  counts.unwatched = starved_.size();
  counts.watched = tree_->size() - starved_.size();
  counts.waiting = collector().size();
  counts.overflows = overflows_;
  return counts;
}

}  // namespace vt
