#include "metadata/live/PlainTextReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "foundation/TextDecoding.h"
#include "metadata/live/FileStatus.h"
#include "metadata/live/OpenForReading.h"

namespace vt {

std::string plainTextOf(int file) {
  const std::optional<FileStatus> status = statusOf(file);
  std::string bytes(std::min<std::uint64_t>(status ? status->sizeInBytes : 0, kMostTextBytes),
                    '\0');
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const ssize_t got = read(file, bytes.data() + filled, bytes.size() - filled);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;  // it shrank, or its disk fails: what is there is its text
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return decodePlainText(bytes);
}

std::optional<std::string> readPlainText(int folder, const char* name, const AccessJudge& judge) {
  // Before opening, since opening alone can wake whatever is behind a device or a pipe.
  const std::optional<FileStatus> named = statusOf(folder, name);
  if (!named || !named->isRegularFile()) return std::nullopt;
  const Descriptor file = openForReading(folder, name, 0);
  if (!file.isOpen()) return std::nullopt;
  const std::optional<FileStatus> opened = statusOf(file.get());
  if (!opened || !opened->isRegularFile() ||
      !judge.allows(opened->ownership, kMayRead, [&] { return readAcl(file.get()); })) {
    return std::nullopt;
  }

  return plainTextOf(file.get());
}

}  // namespace vt
