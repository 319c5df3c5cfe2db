#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"
#include "foundation/Value.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The longest text of one attribute, in bytes, and how many values one with several may have: what
/// is beyond is left out. Longer ones are no titles or comments but somebody's data.
inline constexpr std::size_t kMostAttributeText = std::size_t{32} << 10;
inline constexpr std::size_t kMostAttributeValues = 1000;

/// Gathers the attributes of one file, each in the shape that the schema gives it. What several
/// places of a file tell is told by the place that is asked first: a later value is passed over,
/// but for lists, which grow.
class FoundAttributes {
 public:
  /// Borrows `extraction`.
  explicit FoundAttributes(Extraction& extraction) : values_(extraction.attributes) {}

  /// As tidiedText() gives it; passed over when nothing is left.
  void setText(std::string_view name, std::string_view text);
  /// Adds to a list of texts, likewise; none comes in twice.
  void addText(std::string_view name, std::string_view text);
  /// Adds each part of `text` between any of `separators`.
  void addTexts(std::string_view name, std::string_view text, std::string_view separators);
  /// An integer when it is one. Passed over when it is not finite.
  void setNumber(std::string_view name, double number);
  void setBoolean(std::string_view name, bool boolean);
  void setDate(std::string_view name, const std::optional<Date>& date);

  bool has(std::string_view name) const { return values_.contains(std::string(name)); }

 private:
  std::map<std::string, Value>& values_;
};

/// `text` as UTF-8. What is not that, as in old tags and heads, is in the character set that
/// decodePlainText() takes it for.
std::string asUtf8(std::string_view text);

/// asUtf8() with one blank for each run of white space and control characters, none around
/// it, and of no more than kMostAttributeText.
std::string tidiedText(std::string_view text);

}  // namespace vt
