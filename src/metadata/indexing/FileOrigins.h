#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

#include "metadata/extract/Extractor.h"
#include "metadata/live/FileStatus.h"
#include "metadata/store/SegmentColumns.h"

namespace vt {

/// Tells which files of a segment may be looked into by one process: see FileOrigin.
///
/// Two files are of one origin when all of this is the same:
///  - the owner, who could have made both, and may give himself any right to them;
///  - what others may read and change: by the mode and the access control list, and by the group
///    where those let it do anything but what they let everybody;
///  - where others may read or change them at all, the restricting folders above them: those that
///    do not let everybody list and search them, by owner, group, mode and list;
///  - the file system.
///
/// A file has an origin of its own, which it shares with no other, when it is root's or nobody's,
/// which stand for others than themselves; when a list of its own or of a folder above is not
/// known; and when it is not any more as the crawl has seen it. So must a file with several names,
/// which is for the caller to find out: it may be below other folders as well.
class FileOrigins {
 public:
  /// Borrows `columns`. Takes 4 bytes for each folder and class.
  explicit FileOrigins(const SegmentColumns& columns);

  /// A number for all of that but the file system; kOwnGroup when the origin is its own. Rows of
  /// one group are best looked into one after the other.
  using Group = std::uint64_t;
  static constexpr Group kOwnGroup = 0;
  Group groupOf(std::uint32_t row) const;

  /// That of the row, whose file was found to be like `status` when it was opened.
  FileOrigin originOf(std::uint32_t row, const FileStatus& status);

 private:
  static constexpr std::uint32_t kUnknown = 0;

  const SegmentColumns& columns_;
  std::vector<std::uint32_t> classes_;  // by what files of each let whom do; kUnknown
  std::vector<std::uint32_t> ways_;     // by folder: through which restricting ones; kUnknown
  std::map<std::pair<Group, std::uint64_t>, FileOrigin> origins_;  // by group and device
};

}  // namespace vt
