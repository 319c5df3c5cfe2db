#include "metadata/engine/SubstringKernels.h"

#if defined(__x86_64__)

#include <emmintrin.h>

#include <bit>

namespace vt {

std::size_t findWithSSE2(const ScannedNeedle& needle, std::string_view text, std::size_t from) {
  constexpr std::size_t kPlaces = 16;
  const __m128i rarest = _mm_set1_epi8(needle.text[needle.rarest]);
  const __m128i second = _mm_set1_epi8(needle.text[needle.second]);
  const auto load = [&](std::size_t at) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + at));
  };
  // The offsets are inside of the needle, so a block ends inside of the text as long as the
  // needle fits behind its last place.
  const std::size_t lastPlace = text.size() - needle.text.size();
  for (; from + kPlaces - 1 <= lastPlace; from += kPlaces) {
    const __m128i both = _mm_and_si128(_mm_cmpeq_epi8(load(from + needle.rarest), rarest),
                                       _mm_cmpeq_epi8(load(from + needle.second), second));
    for (auto places = static_cast<unsigned>(_mm_movemask_epi8(both)); places != 0;
         places &= places - 1) {
      const std::size_t place = from + static_cast<std::size_t>(std::countr_zero(places));
      if (needle.isAt(text.data() + place)) return place;
    }
  }
  return text.find(needle.text, from);
}

}  // namespace vt

#endif
