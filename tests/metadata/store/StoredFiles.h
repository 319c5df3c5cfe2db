#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "metadata/live/Descriptor.h"
#include "metadata/rights/AclBytes.h"
#include "metadata/store/FileWriter.h"
#include "metadata/store/Segment.h"
#include "metadata/store/SegmentBuilder.h"
#include "metadata/store/StoreCalls.h"
#include "metadata/types/ShippedTypes.h"
#include "support/ReadFile.h"
#include "support/TemporaryFolder.h"

namespace vt {

inline const ContentTypes& storedTypes() {
  static const ContentTypes types = shippedTypes();
  return types;
}

/// Files as they are put into a segment, and what they must come out as.
class StoredFiles {
 public:
  struct File {
    std::string path;
    std::string name;
    FileStatus status;
    std::string type;
    std::vector<std::uint8_t> acl;
    bool isFolder = false;
  };
  struct Folder {
    std::string path;  ///< with a slash at the end
    std::uint32_t number = 0;
    FolderStamp stamp;
    bool isListed = false;
  };

  StoredFiles() : built(storedTypes()) {
    const std::uint32_t open = built.addClass({0, 0, S_IFDIR | 0755}, AclPresence::kNone, {});
    folders.push_back({"/", built.addFolder(kNoFolder, "", open), {}, false});
  }

  /// Puts a file into the folder with the place `folder` in `folders`.
  void add(std::size_t folder, const std::string& name, const FileStatus& status,
           const std::vector<std::uint8_t>& acl = {}) {
    const bool isFolder = S_ISDIR(status.ownership.mode);
    const ContentTypeId type =
        isFolder ? storedTypes().typeOfFolder(name) : storedTypes().typeOfFile(name);
    File file{folders[folder].path + name,
              name,
              status,
              std::string(storedTypes()[type].identifier),
              acl,
              isFolder};
    SegmentEntry entry{
        .name = name,
        .status = status,
        .type = type,
        .accessClass = built.addClass(
            status.ownership, acl.empty() ? AclPresence::kNone : AclPresence::kPresent, acl),
        .folder = folders[folder].number};
    if (isFolder) {
      entry.ownFolder = built.addFolder(folders[folder].number, name, entry.accessClass);
      folders.push_back({file.path + "/", entry.ownFolder, {}, false});
    }
    if (!built.addRow(entry)) throw std::runtime_error("not added: " + file.path);
    files.push_back(std::move(file));
  }
  void add(std::size_t folder, const std::string& name, std::int64_t modified) {
    add(folder, name, plain(modified));
  }
  void addFolder(std::size_t folder, const std::string& name, std::int64_t modified) {
    FileStatus status = plain(modified);
    status.ownership.mode = S_IFDIR | 0755;
    add(folder, name, status);
  }
  void finish(std::size_t folder, const FolderStamp& stamp, bool isListed) {
    folders[folder].stamp = stamp;
    folders[folder].isListed = isListed;
    built.finishFolder(folders[folder].number, stamp, isListed);
  }

  static FileStatus plain(std::int64_t modified) {
    FileStatus status;
    status.ownership = {1000, 100, S_IFREG | 0644};
    status.modified = Date{std::chrono::microseconds{modified}};
    return status;
  }

  /// The files in the order that a segment has: newest first, equal ones by path.
  std::vector<File> inOrder() const {
    std::vector<File> sorted = files;
    std::ranges::stable_sort(sorted, [](const File& a, const File& b) {
      if (a.status.modified != b.status.modified) return a.status.modified > b.status.modified;
      return a.path < b.path;
    });
    return sorted;
  }

  SegmentBuilder built;
  std::vector<File> files;
  std::vector<Folder> folders;
};

/// A tree of files with names and numbers of every kind, the same for the same seed.
inline StoredFiles randomFiles(std::uint32_t seed, std::size_t count) {
  std::mt19937 random(seed);
  const auto oneOf = [&](const auto& choices) { return choices[random() % std::size(choices)]; };
  const std::string kParts[] = {"a",
                                "A",
                                "b-",
                                "-",
                                ".",
                                " ",
                                "Report",
                                ".pdf",
                                ".JPG",
                                "\xc3\xbc",
                                "u\xcc\x88",
                                "\xc3\x9f",
                                "\xff",
                                "\xc3",
                                "\n",
                                "%",
                                "0",
                                "\x01",
                                "\xf0\x9f\x98\x80",
                                "\xe1\xba\x9e"};
  const std::int64_t kDates[] = {0,
                                 1,
                                 -1,
                                 -12'345'678'901'234,
                                 1'795'219'200'000'000,
                                 1'795'219'200'000'001,
                                 253'402'300'799'999'999,
                                 INT64_MAX,
                                 INT64_MIN + 1};
  const std::uint64_t kSizes[] = {0, 1, 511, 512, 4096, 1ULL << 40, UINT64_MAX, UINT64_MAX - 511};
  const std::vector<std::uint8_t> kLists[] = {
      {}, {}, aclBytes({{1, 6}, {2, 4, 1001}, {4, 4}, {16, 4}, {32, 0}}), {9, 9, 9}};
  const auto date = [&] { return Date{std::chrono::microseconds{oneOf(kDates)}}; };
  StoredFiles made;
  for (std::size_t i = 0; i < count; ++i) {
    std::string name;
    for (std::size_t parts = 1 + random() % 4; parts > 0; --parts) name += oneOf(kParts);
    if (random() % 50 == 0) name += std::string(255 - name.size(), 'X');
    const std::size_t folder = random() % made.folders.size();
    // A name is in its folder once.
    const std::string path = made.folders[folder].path + name;
    if (std::ranges::find(made.files, path, &StoredFiles::File::path) != made.files.end()) continue;
    FileStatus status;
    status.ownership = {static_cast<std::uint32_t>(random() % 3),
                        static_cast<std::uint32_t>(random() % 3),
                        static_cast<std::uint32_t>(0640 + random() % 8)};
    status.ownership.mode |= random() % 4 == 0 ? S_IFDIR : random() % 8 == 0 ? S_IFLNK : S_IFREG;
    status.sizeInBytes = oneOf(kSizes);
    status.allocatedBytes = oneOf(kSizes);
    status.modified = date();
    status.accessed = date();
    status.attributesChanged = date();
    if (random() % 4 != 0) status.created = date();
    made.add(folder, name, status, oneOf(kLists));
  }
  for (std::size_t folder = 0; folder < made.folders.size(); ++folder) {
    if (random() % 4 == 0) continue;
    made.finish(folder, {random(), random(), oneOf(kDates), oneOf(kDates)}, random() % 2 == 0);
  }
  made.built.markRoot(made.folders[0].number);
  return made;
}

/// A segment file in a folder of its own, that can be written to and opened again.
class SegmentFile {
 public:
  explicit SegmentFile(const SegmentBuilder& built, std::uint64_t generation = 1)
      : folder_(::open(place_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    StoreCalls& calls = StoreCalls::system();
    const Descriptor file(calls.create(folder_.get(), "segment"));
    FileWriter writer(calls, file.get(), "segment");
    const auto written = built.write(writer, generation);
    if (!written || writer.sync()) throw std::runtime_error("no segment");
    identity = *written;
    bytes = readFile(path());
  }

  std::string path() const { return place_ / "segment"; }
  /// Puts other bytes into the file, in place: a file emptied first is flushed to disk on closing.
  void replace(std::string_view with) const {
    const Descriptor file(::open(path().c_str(), O_WRONLY | O_CLOEXEC));
    if (::pwrite(file.get(), with.data(), with.size(), 0) != static_cast<ssize_t>(with.size()) ||
        ::ftruncate(file.get(), static_cast<off_t>(with.size())) != 0) {
      throw std::runtime_error("not replaced");
    }
  }
  Result<std::shared_ptr<const Segment>, StoreError> open() const {
    return Segment::open(folder_.get(), "segment", "segment");
  }

  std::string bytes;
  SegmentIdentity identity;

 private:
  TemporaryFolder place_;
  Descriptor folder_;
};

}  // namespace vt
