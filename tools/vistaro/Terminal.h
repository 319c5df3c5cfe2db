#pragma once

#include <string>
#include <string_view>

namespace vt::tool {

/// How text is shown: with colours on a terminal, plain everywhere else.
class Terminal {
 public:
  /// For standard output. No colours when it is no terminal, NO_COLOR is set, or TERM is "dumb".
  static Terminal standardOutput();
  /// Whether an open descriptor is a terminal that obeys escape sequences: TERM is not "dumb".
  static bool obeysEscapes(int descriptor);

  explicit Terminal(bool colours) : colours_(colours) {}

  bool hasColours() const { return colours_; }
  std::string bold(std::string_view text) const { return styled("1", text); }
  std::string dim(std::string_view text) const { return styled("2", text); }
  std::string good(std::string_view text) const { return styled("32", text); }
  std::string warning(std::string_view text) const { return styled("33", text); }
  std::string bad(std::string_view text) const { return styled("31", text); }

 private:
  std::string styled(std::string_view code, std::string_view text) const;

  bool colours_;
};

/// Writes `vistaro: ` and the text as a line on standard error. Nothing happens when that cannot be
/// written: there is nobody left to tell.
void printError(std::string_view text);

/// Writes bytes on standard error as they are, as those of a ProgressLine. What fails to be shown
/// is of no consequence.
void showOnTerminal(std::string_view bytes);

/// A file name or other foreign text fit for one line of a terminal: bytes that are not UTF-8
/// become U+FFFD, control characters \xNN, so that no name can move the cursor or break the line.
std::string printable(std::string_view bytes);

/// `text` filled with blanks on the right to `columns` code points.
std::string padded(std::string text, std::size_t columns);

}  // namespace vt::tool
