#pragma once

#include <cstdint>
#include <vector>

#include "foundation/FunctionRef.h"

namespace vt {

/// What a listing says that an entry is; some file systems do not say.
enum class EntryKind : std::uint8_t { kUnknown, kFile, kFolder, kLink, kSpecial };

/// Lists open folders, one after the other, through one large buffer.
class FolderReader {
 public:
  FolderReader();

  /// Hands each entry but "." and ".." to `visit`, in the order of the file system. The name
  /// ends in a NUL and is good during the visit. Entries that come or go meanwhile are listed or
  /// not. False when the folder could not be read to its end.
  bool list(int folder, FunctionRef<void(const char* name, EntryKind kind)> visit);

 private:
  std::vector<std::uint64_t> buffer_;  // words, since the kernel's records are aligned to them
};

}  // namespace vt
