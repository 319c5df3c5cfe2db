#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "extraction/BoundedText.h"
#include "extraction/FoundAttributes.h"
#include "extraction/documents/RtfTokens.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// Reads a Rich Text file, of anyone's making: its text, and what its head says of it.
class RtfReader {
 public:
  /// Borrows `extraction`.
  explicit RtfReader(Extraction& extraction) : extraction_(extraction), attributes_(extraction) {}

  /// False when the bytes are no Rich Text.
  bool read(std::string_view bytes);

 private:
  /// Where text goes.
  enum class Destination { kBody, kFonts, kHead, kProperty, kGenerator, kCreated, kNowhere };

  /// What holds within braces.
  struct Group {
    Destination destination = Destination::kBody;
    std::string property;  // of the head: "title"
    int font = 0;
    int fallbackLength = 1;  // of a Unicode character
    bool isHidden = false;
    bool isOptional = false;  // it begins with a destination that readers may not know
  };
  struct Moment {
    int year = 0;
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
  };

  void open();
  void close();
  void control(RtfTokens& tokens, const RtfToken& token);
  bool destination(std::string_view word);
  bool character(std::string_view word);
  void unicode(int number);
  void text(std::string_view bytes);
  void add(std::string_view utf8);
  void addByte(char byte);
  /// Turns the bytes that came one by one into text.
  void flush();
  void keepProperty(const std::string& name);
  std::string charset() const;
  Group& group() { return groups_.back(); }

  Extraction& extraction_;
  FoundAttributes attributes_;
  BoundedText text_;
  std::vector<Group> groups_;
  std::size_t ignoredGroups_ = 0;  // nested deeper than any document is
  std::string bytes_;
  std::string property_;
  Moment created_;
  std::map<int, int> charsetOfFont_;
  int codePage_ = 1252;
  int toSkip_ = 0;  // of the characters that stand for a Unicode character
  std::optional<char32_t> highHalf_;
};

}  // namespace vt
