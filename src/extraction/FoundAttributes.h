#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "foundation/Date.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// The longest text of one attribute, and how many values one with several may have: what is beyond
/// is left out.
inline constexpr std::size_t kMostAttributeText = 4096;
inline constexpr std::size_t kMostAttributeValues = 256;

/// Writes attributes into an Extraction, leaving out those that are empty.
class FoundAttributes {
 public:
  /// Borrows `extraction`.
  explicit FoundAttributes(Extraction& extraction) : extraction_(extraction) {}

  /// UTF-8 or not: what is none is replaced. White space around it is left out and counts as one
  /// blank within. The first text set stays.
  void setText(std::string_view name, std::string_view text);
  /// Adds to the values of an attribute that has several, unless it is among them.
  void addText(std::string_view name, std::string_view text);
  /// Adds each part of `text` between any of `separators`.
  void addTexts(std::string_view name, std::string_view text, std::string_view separators);
  /// The first one set stays.
  void setInteger(std::string_view name, std::int64_t number);
  void setReal(std::string_view name, double number);
  void setBoolean(std::string_view name, bool value);
  void setDate(std::string_view name, const std::optional<Date>& date);
  /// Adds to the values of an attribute that has several numbers or dates.
  void addValue(std::string_view name, const Value& value);

 private:
  void set(std::string_view name, Value value);

  Extraction& extraction_;
};

/// `text` with one blank for each run of white space and control characters, none around it, and of
/// a bounded length.
std::string tidiedText(std::string_view text);

}  // namespace vt
