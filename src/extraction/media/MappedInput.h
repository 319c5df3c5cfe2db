#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vt {

/// The bytes of an open file in memory, as far as they are looked at. The process is killed when
/// the file is cut off meanwhile: for the worker's child alone.
class MappedInput {
 public:
  /// Nothing when it can't be mapped: it is too large for the address space, or no regular file.
  static std::optional<MappedInput> of(int file);
  MappedInput(MappedInput&& other) noexcept;
  MappedInput& operator=(MappedInput&&) = delete;
  ~MappedInput();

  std::string_view bytes() const { return bytes_; }

 private:
  explicit MappedInput(std::string_view bytes) : bytes_(bytes) {}

  std::string_view bytes_;
};

}  // namespace vt
