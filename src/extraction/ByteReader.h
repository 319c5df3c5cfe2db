#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

namespace vt {

/// Appends a number as it lies in memory.
template <std::integral Number>
void appendNumber(std::string& bytes, Number number) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

/// Takes numbers and texts from the front of bytes that may be of anyone's making.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

  /// What was not taken yet.
  std::string_view rest() const { return rest_; }

  /// A number as appendNumber() wrote it; nothing when too few bytes are left.
  template <std::integral Number>
  std::optional<Number> number() {
    Number number;
    if (rest_.size() < sizeof number) return std::nullopt;
    rest_.copy(reinterpret_cast<char*>(&number), sizeof number);
    rest_.remove_prefix(sizeof number);
    return number;
  }

  /// So many bytes; nothing when there are fewer.
  std::optional<std::string_view> take(std::size_t size) {
    if (size > rest_.size()) return std::nullopt;
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  /// As many bytes as the number before them says.
  template <std::unsigned_integral Size>
  std::optional<std::string_view> sized() {
    const std::optional<Size> size = number<Size>();
    return size ? take(*size) : std::nullopt;
  }

 private:
  std::string_view rest_;
};

}  // namespace vt
