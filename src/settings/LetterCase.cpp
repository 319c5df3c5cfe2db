#include "settings/LetterCase.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

#include <algorithm>

#include "foundation/UTF8.h"

namespace vt {
namespace {

icu::UnicodeString wide(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

}  // namespace

std::string lowercaseString(std::string_view text) {
  std::string result;
  wide(text).toLower(icu::Locale::getRoot()).toUTF8String(result);
  return result;
}

std::string withFirstCharacterInUpperCase(std::string_view text) {
  if (text.empty()) return {};
  const std::size_t length = decodeCodePoint(text).length;
  std::string result;
  wide(text.substr(0, length)).toUpper(icu::Locale::getRoot()).toUTF8String(result);
  return result.append(text.substr(length));
}

}  // namespace vt
