#pragma once

#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vt {

/// A set of the numbers below a fixed size, one bit for each. Combining two sets takes the same
/// time however full they are: 2 us for a million numbers.
class Bitmap {
 public:
  /// The empty set of numbers below `size`.
  explicit Bitmap(std::size_t size) : size_(size), words_((size + kBits - 1) / kBits, 0) {}

  /// The set that has the bits of `words`, the lowest first. What is missing is 0.
  Bitmap(std::size_t size, std::span<const std::uint64_t> words);

  std::size_t size() const { return size_; }
  std::span<const std::uint64_t> words() const { return words_; }
  bool contains(std::size_t number) const {
    assert(number < size_);
    return (words_[number / kBits] >> number % kBits & 1) != 0;
  }
  std::size_t count() const;

  void add(std::size_t number) {
    assert(number < size_);
    words_[number / kBits] |= std::uint64_t{1} << number % kBits;
  }
  /// Adds all from `first` to before `last`.
  void addRange(std::size_t first, std::size_t last);
  /// Takes out what is below `first`, and `last` and above.
  void keepRange(std::size_t first, std::size_t last);

  // The other set must be of the same size.
  Bitmap& operator|=(const Bitmap& other);
  Bitmap& operator&=(const Bitmap& other);
  /// Takes out what is in `other`.
  Bitmap& operator-=(const Bitmap& other);
  /// Puts in what is not in it, and takes out what is.
  void flip();

  friend bool operator==(const Bitmap&, const Bitmap&) = default;

  /// Calls `visit(number)` for each number in the set, in order.
  template <class Function>
  void forEach(Function visit) const {
    for (std::size_t word = 0; word < words_.size(); ++word) {
      for (std::uint64_t bits = words_[word]; bits != 0; bits &= bits - 1) {
        visit(word * kBits + static_cast<std::size_t>(std::countr_zero(bits)));
      }
    }
  }

  /// Adds the numbers from `first` to before `last` for which `isAdded(number)` is true. A word at
  /// a time and without branches, since a processor cannot guess which they are.
  template <class Function>
  void addIf(std::size_t first, std::size_t last, const Function& isAdded) {
    assert(last <= size_);
    while (first < last) {
      const std::size_t word = first / kBits;
      const std::size_t end = last < (word + 1) * kBits ? last : (word + 1) * kBits;
      std::uint64_t bits = 0;
      for (std::size_t bit = first % kBits; first < end; ++first, ++bit) {
        bits |= static_cast<std::uint64_t>(isAdded(first) ? 1 : 0) << bit;
      }
      words_[word] |= bits;
    }
  }

  /// Takes out the numbers for which `isKept(number)` is false; without branches likewise.
  template <class Function>
  void keepIf(const Function& isKept) {
    for (std::size_t word = 0; word < words_.size(); ++word) {
      std::uint64_t kept = 0;
      for (std::uint64_t bits = words_[word]; bits != 0; bits &= bits - 1) {
        const auto bit = static_cast<std::size_t>(std::countr_zero(bits));
        kept |= static_cast<std::uint64_t>(isKept(word * kBits + bit) ? 1 : 0) << bit;
      }
      words_[word] = kept;
    }
  }

 private:
  static constexpr std::size_t kBits = 64;

  std::size_t size_;
  std::vector<std::uint64_t> words_;  // bits from size_ on are never set
};

}  // namespace vt
