#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vt {

/// A run of bytes, kept apart from text: the same bytes as a string are another value.
class Data {
 public:
  Data() = default;
  explicit Data(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
  explicit Data(std::string_view bytes) : bytes_(bytes.begin(), bytes.end()) {}

  std::vector<std::uint8_t>& bytes() { return bytes_; }
  const std::vector<std::uint8_t>& bytes() const { return bytes_; }
  std::size_t size() const { return bytes_.size(); }
  bool empty() const { return bytes_.empty(); }

  /// The bytes as they are, in a string that claims nothing about their encoding.
  std::string asString() const { return {bytes_.begin(), bytes_.end()}; }

  friend auto operator<=>(const Data&, const Data&) = default;

 private:
  std::vector<std::uint8_t> bytes_;
};

}  // namespace vt
