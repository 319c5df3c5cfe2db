#include "foundation/EncodingGuess.h"

#include <unicode/ucsdet.h>
#include <unicode/uvernum.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>

#include "foundation/SharedLibrary.h"

// The functions of ICU that are used. Each is a macro that puts ICU's version behind the name.
#define VT_DETECTION_FUNCTIONS(X) \
  X(ucsdet_close)                 \
  X(ucsdet_detectAll)             \
  X(ucsdet_getConfidence)         \
  X(ucsdet_getName)               \
  X(ucsdet_open)                  \
  X(ucsdet_setText)

namespace vt {
namespace {

/// ICU's detection, loaded at its first use: most texts are UTF-8.
struct Detection {
  const SharedLibrary library{"libicui18n.so." U_ICU_VERSION_SHORT};
  VT_DETECTION_FUNCTIONS(VT_LIBRARY_FUNCTION)
};

const Detection* detection() {
  static const std::unique_ptr<const Detection> library = [] {
    try {
      return std::make_unique<const Detection>();
    } catch (const std::runtime_error&) {
      return std::unique_ptr<const Detection>();
    }
  }();
  return library.get();
}

/// A character set that counts when it is found, and what it takes to be believed.
struct Candidate {
  std::string_view found;  ///< as ICU calls it
  const char* charset;     ///< as iconv calls it, of which the former is a part
  std::int32_t confidence;
  std::size_t bytes;  ///< beyond ASCII
};

// A character of several bytes rarely comes about by chance; letters of Western languages do look
// like short words of others.
constexpr std::array<Candidate, 23> kCandidates = {{
    {"Shift_JIS", "CP932", 50, 2},
    {"EUC-JP", "EUC-JP", 50, 4},
    {"EUC-KR", "UHC", 50, 4},
    {"Big5", "BIG5-HKSCS", 50, 4},
    {"GB18030", "GB18030", 50, 4},
    {"ISO-2022-JP", "ISO-2022-JP-2", 50, 0},
    {"ISO-2022-KR", "ISO-2022-KR", 50, 0},
    {"ISO-2022-CN", "ISO-2022-CN", 50, 0},
    {"KOI8-R", "KOI8-R", 40, 8},
    {"windows-1250", "WINDOWS-1250", 40, 8},
    {"windows-1251", "WINDOWS-1251", 40, 8},
    {"windows-1253", "WINDOWS-1253", 40, 8},
    {"windows-1254", "WINDOWS-1254", 40, 8},
    {"windows-1255", "WINDOWS-1255", 40, 8},
    {"windows-1256", "WINDOWS-1256", 40, 8},
    {"ISO-8859-2", "ISO-8859-2", 40, 8},
    {"ISO-8859-5", "ISO-8859-5", 40, 8},
    {"ISO-8859-6", "ISO-8859-6", 40, 8},
    {"ISO-8859-7", "WINDOWS-1253", 40, 8},
    {"ISO-8859-8", "WINDOWS-1255", 40, 8},
    {"ISO-8859-8-I", "WINDOWS-1255", 40, 8},
    {"ISO-8859-9", "WINDOWS-1254", 40, 8},
    {"windows-949", "UHC", 50, 4},
}};

/// As much as tells a language; a text is not looked at as a whole.
std::string_view sampleOf(std::string_view bytes) {
  constexpr std::size_t kSample = std::size_t{64} << 10;
  constexpr std::size_t kBefore = 256;
  const auto isTelling = [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 || c == '\x1B';
  };
  const auto first =
      static_cast<std::size_t>(std::ranges::find_if(bytes, isTelling) - bytes.begin());
  return bytes.substr(first - std::min(first, kBefore), kSample);
}

}  // namespace

const char* guessedCharset(std::string_view bytes) {
  const Detection* icu = detection();
  if (!icu) return nullptr;
  const std::string_view sample = sampleOf(bytes);
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UCharsetDetector, decltype(icu->ucsdet_close)> detector(
      icu->ucsdet_open(&status), icu->ucsdet_close);
  icu->ucsdet_setText(detector.get(), sample.data(), static_cast<std::int32_t>(sample.size()),
                      &status);
  std::int32_t count = 0;
  const UCharsetMatch** const matches = icu->ucsdet_detectAll(detector.get(), &count, &status);
  if (U_FAILURE(status) || count == 0) return nullptr;
  const std::string_view best = icu->ucsdet_getName(matches[0], &status);
  const std::int32_t confidence = icu->ucsdet_getConfidence(matches[0], &status);
  const auto* const candidate = std::ranges::find(kCandidates, best, &Candidate::found);
  if (candidate == kCandidates.end() || confidence < candidate->confidence) return nullptr;
  const auto beyondAscii =
      std::ranges::count_if(sample, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
  const bool isEnough = static_cast<std::size_t>(beyondAscii) >= candidate->bytes;
  return isEnough ? candidate->charset : nullptr;
}

}  // namespace vt
