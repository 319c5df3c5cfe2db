#include <cstddef>
#include <cstdint>
#include <string_view>

#include "metadata/text/ContentQuery.h"
#include "metadata/text/ContentTerms.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view given(reinterpret_cast<const char*>(bytes), size);
  std::size_t termBytes = 0;
  vt::forEachTerm(vt::query::segmentContent(given), [&](const vt::ContentTerm& term) {
    // What a query and the tokenizer part terms by must be in none.
    if (term.term.find_first_of(" \t\"") != std::string_view::npos) __builtin_trap();
    termBytes += term.term.size();
    return true;
  });
  if (termBytes > 200 * (size + 1)) __builtin_trap();
  vt::contentQueryOf(given, static_cast<std::uint8_t>(size % 16));
  return 0;
}
