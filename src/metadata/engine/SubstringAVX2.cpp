#include "metadata/engine/SubstringKernels.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <bit>
#include <cstdint>

namespace vt {

// The attribute and not a compiler option for the file: that would also compile the inline
// functions of headers with AVX2, and the linker might take those for the whole program.
#define VT_WITH_AVX2 __attribute__((target("avx2")))

namespace {

constexpr std::size_t kVector = 32;

VT_WITH_AVX2 inline __m256i equalBytes(const char* at, __m256i byte) {
  return _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)), byte);
}

}  // namespace

VT_WITH_AVX2 std::size_t findWithAVX2(const ScannedNeedle& needle, std::string_view text,
                                      std::size_t from) {
  // Two vectors a turn: most turns find nothing in either and go on after one test.
  constexpr std::size_t kPlaces = 2 * kVector;
  const __m256i rarest = _mm256_set1_epi8(needle.text[needle.rarest]);
  const __m256i second = _mm256_set1_epi8(needle.text[needle.second]);
  // The offsets are inside of the needle, so a block ends inside of the text as long as the
  // needle fits behind its last place.
  const std::size_t lastPlace = text.size() - needle.text.size();
  for (; from + kPlaces - 1 <= lastPlace; from += kPlaces) {
    const char* const atRarest = text.data() + from + needle.rarest;
    const char* const atSecond = text.data() + from + needle.second;
    const __m256i low =
        _mm256_and_si256(equalBytes(atRarest, rarest), equalBytes(atSecond, second));
    const __m256i high = _mm256_and_si256(equalBytes(atRarest + kVector, rarest),
                                          equalBytes(atSecond + kVector, second));
    if (_mm256_testz_si256(_mm256_or_si256(low, high), _mm256_set1_epi8(-1)) != 0) continue;
    const auto lowPlaces = static_cast<std::uint32_t>(_mm256_movemask_epi8(low));
    const auto highPlaces = static_cast<std::uint32_t>(_mm256_movemask_epi8(high));
    for (std::uint64_t places = lowPlaces | static_cast<std::uint64_t>(highPlaces) << kVector;
         places != 0; places &= places - 1) {
      const std::size_t place = from + static_cast<std::size_t>(std::countr_zero(places));
      if (needle.isAt(text.data() + place)) return place;
    }
  }
  return text.find(needle.text, from);
}

}  // namespace vt

#endif
