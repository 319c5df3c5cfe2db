#include "metadata/engine/SubstringScanner.h"

#include <array>
#include <cassert>
#include <cstdint>
#include <utility>

#include "metadata/engine/SubstringKernels.h"

namespace vt {
namespace {

// The bytes of folded file names, the most frequent first; what is not here is rarer still.
constexpr std::string_view kFrequentBytes = "e.a_ritnosp-ldc 20mgu1fhx3jbv4ky5w678z9q";

constexpr std::array<std::uint8_t, 256> frequencies() {
  std::array<std::uint8_t, 256> result{};
  for (std::size_t rank = 0; rank < kFrequentBytes.size(); ++rank) {
    result[static_cast<unsigned char>(kFrequentBytes[rank])] =
        static_cast<std::uint8_t>(kFrequentBytes.size() - rank);
  }
  return result;
}

constexpr std::array<std::uint8_t, 256> kFrequencies = frequencies();

std::uint8_t frequencyOf(char byte) { return kFrequencies[static_cast<unsigned char>(byte)]; }

}  // namespace

std::vector<VectorInstructions> availableVectorInstructions() {
  std::vector<VectorInstructions> available = {VectorInstructions::kNone};
#if defined(__x86_64__)
  available.push_back(VectorInstructions::kSSE2);  // every x86-64 has it
  if (__builtin_cpu_supports("avx2")) available.push_back(VectorInstructions::kAVX2);
#endif
  return available;
}

SubstringScanner::SubstringScanner(std::string needle, VectorInstructions instructions)
    : needle_(std::move(needle)), instructions_(instructions) {
  assert(!needle_.empty());
  for (std::size_t at = 1; at < needle_.size(); ++at) {
    if (frequencyOf(needle_[at]) < frequencyOf(needle_[rarest_])) rarest_ = at;
  }
  if (needle_.size() == 1) return;
  second_ = rarest_ == 0 ? 1 : 0;
  for (std::size_t at = 0; at < needle_.size(); ++at) {
    if (at != rarest_ && frequencyOf(needle_[at]) < frequencyOf(needle_[second_])) second_ = at;
  }
}

std::size_t SubstringScanner::find(std::string_view text, std::size_t from) const {
  if (from > text.size() || text.size() - from < needle_.size()) return std::string_view::npos;
  switch (instructions_) {
#if defined(__x86_64__)
    case VectorInstructions::kSSE2:
      return findWithSSE2({needle_, rarest_, second_}, text, from);
    case VectorInstructions::kAVX2:
      return findWithAVX2({needle_, rarest_, second_}, text, from);
#endif
    default:
      return text.find(needle_, from);
  }
}

}  // namespace vt
