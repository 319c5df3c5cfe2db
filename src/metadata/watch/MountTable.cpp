#include "metadata/watch/MountTable.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <utility>

#include "metadata/crawl/IndexRoots.h"

namespace vt {
namespace {

constexpr auto kSharedTypes = std::to_array<std::string_view>(
    {"9p", "afs", "beegfs", "ceph", "cifs", "coda", "gfs2", "glusterfs", "lustre", "ncpfs", "nfs",
     "nfs4", "ocfs2", "smb3", "smbfs", "virtiofs"});

std::string_view nextWord(std::string_view& line) {
  const std::string_view word = line.substr(0, line.find(' '));
  line.remove_prefix(std::min(word.size() + 1, line.size()));
  return word;
}

template <class Number>
std::optional<Number> numberIn(std::string_view text, int base = 10) {
  Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// The kernel writes blanks, line feeds and backslashes as "\040" and the like.
std::string unescaped(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const std::optional<unsigned> code = text.front() == '\\' && text.size() >= 4
                                             ? numberIn<unsigned>(text.substr(1, 3), 8)
                                             : std::nullopt;
    bytes += code ? static_cast<char>(*code) : text.front();
    text.remove_prefix(code ? 4 : 1);
  }
  return bytes;
}

std::optional<std::uint64_t> deviceIn(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const auto major = numberIn<std::uint32_t>(text.substr(0, colon));
  const auto minor = numberIn<std::uint32_t>(text.substr(colon + 1));
  if (!major || !minor) return std::nullopt;
  return static_cast<std::uint64_t>(*major) << 32 | *minor;
}

// 36 35 98:0 /root /mount/point rw,noatime shared:1 master:2 - ext3 /dev/root rw
std::optional<Mount> parseMount(std::string_view line) {
  const auto id = numberIn<std::uint64_t>(nextWord(line));
  nextWord(line);
  const auto device = deviceIn(nextWord(line));
  Mount mount;
  mount.root = unescaped(nextWord(line));
  mount.point = unescaped(nextWord(line));
  const std::size_t dash = line.find(" - ");
  if (!id || !device || !mount.point.starts_with('/') || dash == std::string_view::npos) {
    return std::nullopt;
  }
  line.remove_prefix(dash + 3);
  mount.id = *id;
  mount.device = *device;
  mount.type = nextWord(line);
  return mount;
}

}  // namespace

std::vector<Mount> parseMounts(std::string_view text) {
  std::vector<Mount> mounts;
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (std::optional<Mount> mount = parseMount(line)) mounts.push_back(*std::move(mount));
  }
  return mounts;
}

std::vector<Mount> mountsSeen(const std::vector<Mount>& all, const WatchScope& scope) {
  std::vector<Mount> seen;
  for (const std::string& root : scope.roots) {
    const Mount* holder = nullptr;
    for (const Mount& mount : all) {
      const bool holds = isInFolder(root, mount.point);
      // Of two at one place the later one hides the earlier.
      if (holds && (holder == nullptr || mount.point.size() >= holder->point.size())) {
        holder = &mount;
      }
    }
    if (holder != nullptr && std::ranges::find(seen, *holder) == seen.end()) {
      seen.push_back(*holder);
    }
  }
  for (const Mount& mount : all) {
    if (scope.holds(mount.point) && std::ranges::find(seen, mount) == seen.end()) {
      seen.push_back(mount);
    }
  }
  return seen;
}

bool isSharedByMachines(const Mount& mount) {
  return std::ranges::find(kSharedTypes, mount.type) != kSharedTypes.end() ||
         mount.type.starts_with("fuse.");
}

MountTable::MountTable() : file_(::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC)) {}

bool MountTable::hasChanged() {
  pollfd change{.fd = file_.get(), .events = POLLPRI, .revents = 0};
  const bool isChanged = ::poll(&change, 1, 0) > 0 && (change.revents & (POLLPRI | POLLERR)) != 0;
  return std::exchange(isNew_, false) || isChanged;
}

std::vector<Mount> MountTable::read() {
  std::string text;
  char buffer[16384];
  ::lseek(file_.get(), 0, SEEK_SET);
  for (ssize_t count = 0; (count = ::read(file_.get(), buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(count));
  }
  return parseMounts(text);
}

}  // namespace vt
