#include "metadata/live/EntryCount.h"

#include <fcntl.h>

#include "metadata/live/FileStatus.h"
#include "metadata/live/FolderReader.h"
#include "metadata/live/OpenForReading.h"

namespace vt {

std::optional<std::uint64_t> countEntries(int folder, const char* name, const AccessJudge& judge) {
  const Descriptor listed = openForReading(folder, name, O_DIRECTORY);
  if (!listed.isOpen()) return std::nullopt;
  const std::optional<FileStatus> status = statusOf(listed.get());
  if (!status ||
      !judge.allows(status->ownership, kMayRead, [&] { return readAcl(listed.get()); })) {
    return std::nullopt;
  }
  std::uint64_t entries = 0;
  FolderReader().list(listed.get(), [&](const char*, EntryKind) { ++entries; });
  return entries;
}

}  // namespace vt
