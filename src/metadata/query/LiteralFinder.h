#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace vt::query {

/// Finds a text in others by the method of Knuth, Morris and Pratt.
///
/// No byte of the searched text is looked at twice but for the fallbacks, of which there are at
/// most as many as bytes: the time is linear whatever the two texts are, which `string_view::find`
/// does not promise. While nothing of the needle is matched, memchr skips to its first byte.
class LiteralFinder {
 public:
  /// `needle` must not be empty.
  explicit LiteralFinder(std::string needle);

  const std::string& needle() const { return needle_; }

  /// Calls `stopsAt(offset)` for every occurrence, overlapping ones too, from left to right until
  /// it answers true. Answers whether it did.
  template <class Function>
  bool forEach(std::string_view text, Function stopsAt) const {
    if (text.size() < needle_.size()) return false;
    std::size_t matched = 0;
    for (std::size_t at = 0; at < text.size();) {
      if (matched == 0) {
        const void* first = std::memchr(text.data() + at, needle_[0], text.size() - at);
        if (first == nullptr) return false;
        at = static_cast<std::size_t>(static_cast<const char*>(first) - text.data()) + 1;
        matched = 1;
      } else if (text[at] == needle_[matched]) {
        ++at;
        ++matched;
      } else {
        matched = borders_[matched];
        continue;
      }
      if (matched == needle_.size()) {
        if (stopsAt(at - matched)) return true;
        matched = borders_[matched];
      }
    }
    return false;
  }

  bool isIn(std::string_view text) const {
    return forEach(text, [](std::size_t) { return true; });
  }

 private:
  std::string needle_;
  /// borders_[n]: length of the longest text that both begins and ends the first n bytes of the
  /// needle and is shorter than they.
  std::vector<std::uint32_t> borders_;
};

}  // namespace vt::query
