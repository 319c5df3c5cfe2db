#include "metadata/store/Bitmap.h"

#include <algorithm>

namespace vt {
namespace {

constexpr std::uint64_t kAllBits = ~std::uint64_t{0};

}  // namespace

Bitmap::Bitmap(std::size_t size, std::span<const std::uint64_t> words) : Bitmap(size) {
  std::ranges::copy(words.first(std::min(words.size(), words_.size())), words_.begin());
  if (size_ % kBits != 0) words_.back() &= kAllBits >> (kBits - size_ % kBits);
}

std::size_t Bitmap::count() const {
  std::size_t count = 0;
  for (const std::uint64_t word : words_) count += static_cast<std::size_t>(std::popcount(word));
  return count;
}

void Bitmap::addRange(std::size_t first, std::size_t last) {
  assert(first <= last && last <= size_);
  if (first == last) return;
  const std::size_t firstWord = first / kBits;
  const std::size_t lastWord = (last - 1) / kBits;
  const std::uint64_t fromFirst = kAllBits << first % kBits;
  const std::uint64_t toLast = kAllBits >> (kBits - 1 - (last - 1) % kBits);
  if (firstWord == lastWord) {
    words_[firstWord] |= fromFirst & toLast;
    return;
  }
  words_[firstWord] |= fromFirst;
  for (std::size_t word = firstWord + 1; word < lastWord; ++word) words_[word] = kAllBits;
  words_[lastWord] |= toLast;
}

void Bitmap::keepRange(std::size_t first, std::size_t last) {
  Bitmap range(size_);
  range.addRange(first, last);
  *this &= range;
}

Bitmap& Bitmap::operator|=(const Bitmap& other) {
  assert(size_ == other.size_);
  for (std::size_t word = 0; word < words_.size(); ++word) words_[word] |= other.words_[word];
  return *this;
}

Bitmap& Bitmap::operator&=(const Bitmap& other) {
  assert(size_ == other.size_);
  for (std::size_t word = 0; word < words_.size(); ++word) words_[word] &= other.words_[word];
  return *this;
}

Bitmap& Bitmap::operator-=(const Bitmap& other) {
  assert(size_ == other.size_);
  for (std::size_t word = 0; word < words_.size(); ++word) words_[word] &= ~other.words_[word];
  return *this;
}

void Bitmap::flip() {
  for (std::uint64_t& word : words_) word = ~word;
  if (size_ % kBits != 0) words_.back() &= kAllBits >> (kBits - size_ % kBits);
}

}  // namespace vt
