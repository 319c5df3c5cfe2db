#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/FunctionRef.h"
#include "metadata/live/FileStatus.h"
#include "metadata/update/KnownIndex.h"

namespace vt {

/// Finds the other names of files that have changed under one of several.
///
/// An index does not know which names are one file, but when each was created, which no change of a
/// file changes. So names of the same moment are looked at: those of the file, and a few of files
/// that were created in the same tick of the clock. A file that went says only what it was known
/// by; its other names were known by the same.
class OtherNames {
 public:
  explicit OtherNames(const KnownIndex& index) : index_(index) {}

  /// An entry of the open folder was looked at.
  void noteArrival(int folder, const char* name, const FileStatus& status);
  /// A file is about to be taken out of the index, since it went or is another now.
  void noteDeparture(std::uint32_t row);

  /// Calls `visit(folder, name)` for each name to look at on account of what was noted since the
  /// last call.
  void forEach(FunctionRef<void(std::uint32_t folder, std::string_view name)> visit);
  /// Whether there was a file with several names of which not all could be told.
  bool missesSome() const { return missesSome_; }

 private:
  struct Moment {
    bool isOfFileWithSeveral = false;
    std::vector<std::uint32_t> departed;  // rows
  };

  bool isWanted(const Moment& moment, std::uint32_t row) const;

  const KnownIndex& index_;
  std::unordered_map<std::int64_t, Moment> moments_;  // by when files were created
  std::unordered_map<std::int64_t, Moment> done_;     // likewise, in earlier calls
  bool missesSome_ = false;
};

}  // namespace vt
