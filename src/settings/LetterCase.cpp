#include "settings/LetterCase.h"

#include <memory>
#include <stdexcept>

#include "foundation/UTF8.h"
#include "util/ICU.h"

namespace vt {
namespace {

/// The mapping of letters that belongs to no language in particular.
class RootCaseMap {
 public:
  RootCaseMap() : map_(icu().ucasemap_open("", 0, &status_)) { check(status_); }
  RootCaseMap(const RootCaseMap&) = delete;
  RootCaseMap& operator=(const RootCaseMap&) = delete;
  ~RootCaseMap() { icu().ucasemap_close(map_); }

  /// `bytes` as `change` maps it, one of ICU's two functions; what is no text is replaced.
  template <class Change>
  std::string mapped(std::string_view bytes, Change change) const {
    const std::string text = displayText(bytes);
    std::string result(text.size() + kUsualGrowth, '\0');
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = write(text, change, result, status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      status = U_ZERO_ERROR;
      result.resize(static_cast<std::size_t>(length));
      length = write(text, change, result, status);
    }
    check(status);
    result.resize(static_cast<std::size_t>(length));
    return result;
  }

 private:
  static constexpr std::size_t kUsualGrowth = 8;  // a letter may become three

  template <class Change>
  std::int32_t write(std::string_view text, Change change, std::string& result,
                     UErrorCode& status) const {
    return change(map_, result.data(), static_cast<std::int32_t>(result.size()), text.data(),
                  static_cast<std::int32_t>(text.size()), &status);
  }

  static void check(UErrorCode status) {
    if (U_FAILURE(status)) throw std::runtime_error("ICU cannot change the case of a text");
  }

  UErrorCode status_ = U_ZERO_ERROR;
  UCaseMap* map_;
};

}  // namespace

std::string lowercaseString(std::string_view text) {
  return RootCaseMap().mapped(text, icu().ucasemap_utf8ToLower);
}

std::string withFirstCharacterInUpperCase(std::string_view text) {
  if (text.empty()) return {};
  const std::size_t length = decodeCodePoint(text).length;
  return RootCaseMap()
      .mapped(text.substr(0, length), icu().ucasemap_utf8ToUpper)
      .append(text.substr(length));
}

}  // namespace vt
