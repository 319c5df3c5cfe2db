#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vt {

/// Texts one after the other, each ended by a byte that is in none: text n is from offset n to
/// before the byte that ends it, so there is one offset more than texts.
///
/// Offsets that a damaged file gives lead to wrong texts at worst, never outside.
class TextColumn {
 public:
  /// What ends a text: no name of a file holds it.
  static constexpr char kEnd = '\0';

  TextColumn() = default;
  TextColumn(std::string_view text, std::span<const std::uint32_t> offsets)
      : text_(text), offsets_(offsets) {}

  std::string_view text() const { return text_; }
  /// How many texts there are.
  std::size_t size() const { return offsets_.empty() ? 0 : offsets_.size() - 1; }
  /// Where text `number` begins; the end of the whole for a number beyond the last.
  std::size_t offsetOf(std::size_t number) const {
    if (number >= offsets_.size()) return text_.size();
    return offsets_[number] < text_.size() ? offsets_[number] : text_.size();
  }
  std::string_view operator[](std::size_t number) const {
    const std::size_t first = offsetOf(number);
    const std::size_t end = offsetOf(number + 1);
    return text_.substr(first, end > first ? end - first - 1 : 0);
  }
  /// Has the processor fetch where text `number` begins, or its first bytes. Any number will do.
  void prefetchOffset(std::size_t number) const {
    __builtin_prefetch(offsets_.data() + std::min(number, offsets_.size()));
  }
  void prefetchText(std::size_t number) const {
    __builtin_prefetch(text_.data() + offsetOf(number));
  }
  /// The number of the text that holds the byte at `offset`, which is not before text `from`.
  /// Costs the logarithm of how many texts are between.
  std::size_t numberAt(std::size_t offset, std::size_t from) const;

  /// Whether the texts fill the whole without gap or overlap, and the byte that ends one is at the
  /// end of each and nowhere else. Costs a pass over all.
  bool isWhole() const;

 private:
  std::string_view text_;
  std::span<const std::uint32_t> offsets_;
};

}  // namespace vt
