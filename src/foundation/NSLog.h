#pragma once

#include <fmt/format.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace vt {

/// Receives the text of each log line as it was formatted.
using LogSink = std::function<void(std::string_view text)>;

namespace log_detail {

/// Turns the directives %@ %d %ld %lu %f %% of `format` into those of libfmt.
std::string fmtFormat(std::string_view format);
void write(std::string_view text);
/// The last resort: a sink that throws here is passed over.
void writeUnformatted(std::string_view format) noexcept;

template <class T>
const T& printable(const T& argument) {
  // NOLINTNEXTLINE(bugprone-return-const-ref-from-parameter): NSLog() holds what it passes.
  return argument;
}
/// A boolean prints as the number that %d names.
inline int printable(bool boolean) { return boolean ? 1 : 0; }
/// A nil string prints as the platform prints it.
inline std::string_view printable(const std::optional<std::string>& text) {
  return text ? std::string_view(*text) : std::string_view("(null)");
}

}  // namespace log_detail

/// Writes one line to the process's log: standard error, with time, process name and id, control
/// bytes escaped. `format` is the message to the letter, with %@ for text and %d %ld %lu %f for
/// numbers. Never throws: a line that cannot be formatted is written as its format.
template <class... Arguments>
void NSLog(std::string_view format, const Arguments&... arguments) noexcept {
  try {
    const std::string text = fmt::vformat(
        log_detail::fmtFormat(format), fmt::make_format_args(log_detail::printable(arguments)...));
    log_detail::write(text);
  } catch (...) {
    log_detail::writeUnformatted(format);
  }
}

/// Sends the log somewhere else while it lives; the one before is then in force again.
class LogRedirection {
 public:
  explicit LogRedirection(LogSink sink);
  LogRedirection(const LogRedirection&) = delete;
  LogRedirection& operator=(const LogRedirection&) = delete;
  ~LogRedirection();

 private:
  LogSink previous_;
};

/// One log line as it goes to standard error: "2026-11-21 12:00:00.000 name[id] text\n", local
/// time. Control bytes in the text become \xNN; a single line feed at its end stays the line's own.
std::string formatLogLine(std::string_view text);

}  // namespace vt
