#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "foundation/Result.h"
#include "metadata/store/StoreError.h"

namespace vt {

/// A file mapped into memory for reading, for as long as this lives; it may be unlinked meanwhile.
///
/// Nobody may shorten the file: what is behind its end is the end of the process that reads there.
/// So it goes with a page that the disk can't read any more.
class MappedFile {
 public:
  /// Maps the whole of the plain file `name` of the open folder `folder`. `shownPath` is for
  /// errors.
  static Result<MappedFile, StoreError> open(int folder, const std::string& name,
                                             const std::string& shownPath);

  MappedFile(MappedFile&& other) noexcept : bytes_(std::exchange(other.bytes_, {})) {}
  MappedFile& operator=(MappedFile&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    return *this;
  }
  ~MappedFile();

  std::string_view bytes() const { return bytes_; }

  /// Has the process hold no page of the file until it is read again, which then costs a look into
  /// the kernel's cache. Others may read meanwhile.
  void dropPages() const;

 private:
  explicit MappedFile(std::string_view bytes) : bytes_(bytes) {}

  std::string_view bytes_;
};

}  // namespace vt
