#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vt {

// Ascending numbers of documents as bytes: of each 65,536 numbers of which some are in the set,
// their high half, how many they are, and either their low halves or a bit for each, whichever is
// shorter.

void appendDocuments(std::span<const std::uint32_t> documents, std::string& bytes);

/// The documents of sets, as words of 64 bits.
class DocumentBits {
 public:
  /// Of documents below `end`.
  explicit DocumentBits(std::size_t end) : words_((end + 63) / 64) {}

  /// Adds what appendDocuments() has written.
  void add(std::string_view set);
  void add(std::uint32_t document) { words_[document / 64] |= std::uint64_t{1} << (document % 64); }
  bool contains(std::uint32_t document) const {
    return (words_[document / 64] >> (document % 64) & 1) != 0;
  }
  /// Takes out what is not in `others`, of the same end.
  void keepOnly(const DocumentBits& others) {
    for (std::size_t i = 0; i < words_.size(); ++i) words_[i] &= others.words_[i];
  }
  void add(const DocumentBits& others) {
    for (std::size_t i = 0; i < words_.size(); ++i) words_[i] |= others.words_[i];
  }
  std::size_t count() const;
  /// Visits each, in order.
  template <class Function>
  void forEach(Function visit) const {
    for (std::size_t word = 0; word < words_.size(); ++word) {
      for (std::uint64_t bits = words_[word]; bits != 0; bits &= bits - 1) {
        visit(static_cast<std::uint32_t>(word * 64) +
              static_cast<std::uint32_t>(std::countr_zero(bits)));
      }
    }
  }
  std::span<const std::uint64_t> words() const { return words_; }

 private:
  std::vector<std::uint64_t> words_;
};

}  // namespace vt
