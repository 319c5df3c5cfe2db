#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vt {

/// Why an index can't be read or written.
struct StoreError {
  enum class Kind : std::uint8_t {
    kMissing,    ///< no index, or no such file in it
    kDamaged,    ///< not what was written
    kOtherKind,  ///< of a later version of this format, or no index at all
    kNotOurs,    ///< the folder is somebody else's, or others may look or write into it
    kLocked,     ///< another process is writing
    kNoSpace,    ///< the disk or the quota is full
    kReadOnly,   ///< the file system, or the folder for this user
    kTooLarge,   ///< more files or longer names than a segment can hold
    kFailed,     ///< the system said something else
  };

  Kind kind = Kind::kFailed;
  std::string reason;  ///< whole, with path and the system's own words; shown after a colon
};

/// What the system said with `number`, an `errno`: "cannot write /index/segment-7: No space left on
/// device" for `what` being "write".
StoreError systemError(int number, std::string_view what, std::string_view path);

/// That of a file which is not what was written: "/index/segment-7 is damaged: " and `how`.
StoreError damageError(std::string_view path, std::string_view how);

}  // namespace vt
