#include "metadata/indexing/AttributesLook.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "metadata/extract/ExtendedAttributes.h"
#include "metadata/live/OpenForReading.h"
#include "metadata/store/FoldersAlong.h"

namespace vt {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kBetweenReports{100};

/// A working folder of this thread's own while this is alive: what is in it is asked for by its
/// name alone, which takes a third of what opening it does, since there is no other way to ask for
/// the extended attributes of a file in an open folder.
class OwnWorkingFolder {
 public:
  OwnWorkingFolder()
      : before_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)),
        isOwn_(before_.isOpen() && ::unshare(CLONE_FS) == 0) {}
  OwnWorkingFolder(const OwnWorkingFolder&) = delete;
  OwnWorkingFolder& operator=(const OwnWorkingFolder&) = delete;
  ~OwnWorkingFolder() {
    if (isOwn_) static_cast<void>(::fchdir(before_.get()) == 0);
  }

  /// False when names are not to be asked for.
  bool enter(int folder) const { return isOwn_ && ::fchdir(folder) == 0; }

 private:
  Descriptor before_;
  bool isOwn_;
};

/// Whether the entry of the working folder may have attributes that are read.
bool mayHaveAttributes(const char* name) {
  std::array<char, 1024> list;
  const ssize_t size = ::llistxattr(name, list.data(), list.size());
  if (size < 0) return errno == ERANGE;
  return hasExtendedAttributes({list.data(), static_cast<std::size_t>(size)});
}

}  // namespace

Result<bool, StoreError> AttributesLook::run(std::span<const std::uint32_t> rows,
                                             ContentIndexer::Progress progress) {
  std::vector<std::uint32_t> byFolder(rows.begin(), rows.end());
  std::ranges::stable_sort(byFolder, {}, [&](std::uint32_t row) { return segment_.folderOf(row); });
  const OwnWorkingFolder working;
  Clock::time_point reported = Clock::now();
  Descriptor folder;
  std::uint32_t openFolder = kNoFolder;
  bool isEntered = false;
  for (const std::uint32_t row : byFolder) {
    if (const Clock::time_point now = Clock::now(); now - reported >= kBetweenReports) {
      reported = now;
      if (!progress({})) return false;
    }
    const std::uint32_t in = segment_.folderOf(row);
    if (in != openFolder) {
      openFolder = in;
      folder = opener_.find(folderPathOf(segment_, in));
      isEntered = folder.isOpen() && working.enter(folder.get());
    }
    if (!folder.isOpen()) continue;  // the next crawl tells what has become of it
    if (StoreFailure failure = lookAt(folder.get(), row, isEntered)) return *std::move(failure);
  }
  return true;
}

StoreFailure AttributesLook::lookAt(int folder, std::uint32_t row, bool mayListByName) {
  const std::string name(segment_.name(row));
  if (mayListByName && contents_[row] == kWithoutContent && !mayHaveAttributes(name.c_str())) {
    return std::nullopt;
  }
  // Before opening, since opening alone can wake whatever is behind a device or a pipe.
  const std::optional<FileStatus> named = statusOf(folder, name.c_str());
  const Descriptor file =
      named && named->isRegularFile() ? openForReading(folder, name.c_str(), 0) : Descriptor();
  const std::optional<FileStatus> opened =
      file.isOpen() ? statusOf(file.get()) : std::optional<FileStatus>();
  // What is not as the crawl saw it, the next one finds changed.
  if (!opened || !opened->isRegularFile() ||
      opened->attributesChanged != segment_.attributesChangedOf(row)) {
    return std::nullopt;
  }
  return keep(file.get(), *opened, row);
}

StoreFailure AttributesLook::keep(int file, const FileStatus& status, std::uint32_t row) {
  const ContentVersion version = versionOf(status);
  Extraction found;
  found.attributes = extendedAttributesOf(file);
  if (contents_[row] != kWithoutContent) {
    return catalogue_.setExtendedAttributes(contents_[row], version.attributesChanged,
                                            found.attributes);
  }
  if (found.attributes.empty()) return std::nullopt;
  ContentRecord record;
  record.identity = identityOf(status);
  record.version = version;
  const auto [known, isNew] = added_.try_emplace(record.identity, kWithoutContent);
  if (isNew) {
    const Result<ContentNumber, StoreError> number = catalogue_.add(std::move(record), found);
    if (!number) return number.error();
    known->second = *number;
  }
  contents_[row] = known->second;
  return std::nullopt;
}

}  // namespace vt
