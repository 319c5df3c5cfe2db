#include "prototypes/DocumentSet.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vt {
namespace {

constexpr std::size_t kChunk = 65536;
constexpr std::size_t kChunkBytes = kChunk / 8;
constexpr std::size_t kMostListed = kChunkBytes / sizeof(std::uint16_t);

template <class Number>
void append(Number number, std::string& bytes) {
  bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

std::uint16_t halfAt(std::string_view bytes, std::size_t index) {
  std::uint16_t half;
  std::memcpy(&half, bytes.data() + index * sizeof half, sizeof half);
  return half;
}

}  // namespace

void appendDocuments(std::span<const std::uint32_t> documents, std::string& bytes) {
  while (!documents.empty()) {
    const std::uint32_t high = documents.front() / kChunk;
    const auto end = std::ranges::find_if(
        documents, [&](std::uint32_t document) { return document / kChunk != high; });
    const auto count = static_cast<std::size_t>(end - documents.begin());
    append(static_cast<std::uint16_t>(high), bytes);
    append(static_cast<std::uint16_t>(count - 1), bytes);
    if (count <= kMostListed) {
      for (const std::uint32_t document : documents.first(count)) {
        append(static_cast<std::uint16_t>(document % kChunk), bytes);
      }
    } else {
      DocumentBits bits(kChunk);
      for (const std::uint32_t document : documents.first(count)) {
        bits.add(static_cast<std::uint32_t>(document % kChunk));
      }
      bytes.append(reinterpret_cast<const char*>(bits.words().data()), kChunkBytes);
    }
    documents = documents.subspan(count);
  }
}

void DocumentBits::add(std::string_view set) {
  while (!set.empty()) {
    const std::uint32_t first = std::uint32_t{halfAt(set, 0)} * kChunk;
    const std::size_t count = std::size_t{halfAt(set, 1)} + 1;
    set.remove_prefix(2 * sizeof(std::uint16_t));
    if (count <= kMostListed) {
      for (std::size_t i = 0; i < count; ++i) add(first + halfAt(set, i));
      set.remove_prefix(count * sizeof(std::uint16_t));
      continue;
    }
    const std::size_t begin = first / 64;
    const std::size_t length = std::min(kChunk / 64, words_.size() - begin);
    for (std::size_t i = 0; i < length; ++i) {
      std::uint64_t word;
      std::memcpy(&word, set.data() + i * sizeof word, sizeof word);
      words_[begin + i] |= word;
    }
    set.remove_prefix(kChunkBytes);
  }
}

std::size_t DocumentBits::count() const {
  std::size_t count = 0;
  for (const std::uint64_t word : words_) count += static_cast<std::size_t>(std::popcount(word));
  return count;
}

}  // namespace vt
