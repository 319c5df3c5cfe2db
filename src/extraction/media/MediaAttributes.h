#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Date.h"
#include "foundation/Value.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// Gathers the attributes of one file, each in the shape that the schema gives it. What several
/// places of a file tell is told by the place that is asked first: a later value is passed over,
/// but for lists, which grow.
class MediaAttributes {
 public:
  /// Borrows `extraction`.
  explicit MediaAttributes(Extraction& extraction) : values_(extraction.attributes) {}

  /// Without the blanks around it, and cut at 32 KiB; passed over when nothing is left. What is not
  /// UTF-8 is taken for Latin-1, as old tags are.
  void setText(std::string_view name, std::string_view text);
  /// Adds to a list of texts, likewise; none comes in twice, and at most a thousand.
  void addText(std::string_view name, std::string_view text);
  /// Adds each part of `text` between any of `separators`.
  void addTexts(std::string_view name, std::string_view text, std::string_view separators);
  /// An integer when it is one. Passed over when it is not finite.
  void setNumber(std::string_view name, double number);
  void setDate(std::string_view name, const std::optional<Date>& date);
  void setBoolean(std::string_view name, bool boolean);

  bool has(std::string_view name) const { return values_.contains(std::string(name)); }

 private:
  std::map<std::string, Value>& values_;
};

/// `text` as UTF-8: what is not, is taken for Latin-1.
std::string utf8OrLatin1(std::string_view text);

/// `text` as an attribute holds it, see MediaAttributes::setText().
std::string attributeText(std::string_view text);

}  // namespace vt
