#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/FunctionRef.h"
#include "foundation/Result.h"
#include "metadata/store/StoreError.h"
#include "metadata/update/FileChanges.h"

namespace vt {

/// Whoever keeps an index up to date with what a watch tells. An error leaves what is published.
class ChangeSink {
 public:
  /// Is called some times a second while there is much to do; ends that by answering false.
  using Meanwhile = FunctionRef<bool()>;

  enum class Applied : std::uint8_t {
    kEnded,        ///< before it was published
    kAll,          ///< published, with all that has changed
    kNotAllNames,  ///< published, but for other names of files with several: a crawl finds these
  };

  virtual ~ChangeSink() = default;

  /// Looks at everything and publishes it, but looks into no file. False when it was ended before.
  virtual Result<bool, StoreError> crawl(Meanwhile goesOn) = 0;
  /// Looks at what may have changed and publishes it, but looks into no file.
  virtual Result<Applied, StoreError> apply(const FileChanges& changes, Meanwhile goesOn) = 0;
  /// Looks into files that came or have changed. False when it was ended and more are left.
  virtual Result<bool, StoreError> lookIntoFiles(Meanwhile goesOn) = 0;
};

}  // namespace vt
