#include "extraction/ReadFile.h"

#include <errno.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace vt {

Result<std::string, ExtractionFailure> readFileStart(int file, std::size_t most) {
  std::string bytes;
  std::array<char, 65536> block;
  while (bytes.size() < most) {
    const ssize_t count = ::pread(file, block.data(), std::min(block.size(), most - bytes.size()),
                                  static_cast<off_t>(bytes.size()));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) {
      return ExtractionFailure{ExtractionFailure::Kind::kUnreadable,
                               std::string("it cannot be read: ") + ::strerrordesc_np(errno)};
    }
    if (count == 0) break;
    bytes.append(block.data(), static_cast<std::size_t>(count));
  }
  return bytes;
}

Result<std::string, ExtractionFailure> readWholeFile(int file, std::size_t most) {
  Result<std::string, ExtractionFailure> bytes = readFileStart(file, most + 1);
  if (bytes && bytes->size() > most) {
    return ExtractionFailure{ExtractionFailure::Kind::kTooLarge,
                             "it is larger than " + std::to_string(most >> 20) + " MiB"};
  }
  return bytes;
}

}  // namespace vt
