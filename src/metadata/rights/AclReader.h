#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "metadata/rights/AccessControlList.h"

namespace vt {

/// What was learnt of a file's access control list.
struct AclReading {
  /// False when the list could not be read or makes no sense; the file must then be refused.
  bool isKnown = false;
  /// Nothing when the file has none beside its mode bits, or its file system keeps none.
  std::optional<AccessControlList> list;
};

/// Reads the access control list of an open file. `descriptor` must not be one of O_PATH.
AclReading readAcl(int descriptor);

/// Reads that of the entry `name` (ended by NUL) of the open folder `folder`, not following a link.
///
/// About 0.8 us with Linux 6.13 and later; 3 us before, where the only way that starts at a folder
/// descriptor goes through /proc. Without /proc nothing is known there.
AclReading readAcl(int folder, const char* name);

/// What is known of a list that is kept as it is, to be judged later.
enum class AclPresence : std::uint8_t {
  kNone,     ///< the file has none beside its mode bits
  kNotKept,  ///< nor has any other file: its file system keeps none
  kPresent,
  kUnknown,  ///< it could not be read
};

/// Reads the bytes of that list into `bytes`, unjudged; they are empty unless it is present. Costs
/// what readAcl() costs.
AclPresence readAclBytes(int folder, const char* name, std::vector<std::uint8_t>& bytes);

}  // namespace vt
