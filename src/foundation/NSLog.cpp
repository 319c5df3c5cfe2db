#include "foundation/NSLog.h"

#include <errno.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <cassert>

namespace vt {
namespace {

LogSink& currentSink() {
  static LogSink sink;  // empty: standard error
  return sink;
}

void writeToStandardError(std::string_view line) {
  while (!line.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return;  // nobody is left to tell
    }
    line.remove_prefix(static_cast<std::size_t>(written));
  }
}

void appendEscaped(std::string& line, std::string_view text) {
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      fmt::format_to(std::back_inserter(line), "\\x{:02x}", byte);
    } else {
      line.push_back(c);
    }
  }
}

}  // namespace

namespace log_detail {

std::string fmtFormat(std::string_view format) {
  std::string result;
  result.reserve(format.size() + 8);
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char c = format[i];
    if (c == '{' || c == '}') {
      result.append(2, c);
    } else if (c == '%' && i + 1 < format.size()) {
      ++i;
      while (format[i] == 'l' && i + 1 < format.size()) ++i;
      switch (format[i]) {
        case '%':
          result.push_back('%');
          break;
        case 'f':
          result.append("{:f}");
          break;
        default:
          result.append("{}");
      }
    } else {
      result.push_back(c);
    }
  }
  return result;
}

void write(std::string_view text) {
  if (const LogSink& sink = currentSink()) {
    sink(text);
  } else {
    writeToStandardError(formatLogLine(text));
  }
}

void writeUnformatted(std::string_view format) noexcept {
  try {
    write(format);
  } catch (...) {  // NOLINT(bugprone-empty-catch): the log is where failures would be told
  }
}

}  // namespace log_detail

LogRedirection::LogRedirection(LogSink sink)
    : previous_(std::exchange(currentSink(), std::move(sink))) {}

LogRedirection::~LogRedirection() { currentSink() = std::move(previous_); }

std::string formatLogLine(std::string_view text) {
  timeval now{};
  gettimeofday(&now, nullptr);
  tm local{};
  localtime_r(&now.tv_sec, &local);
  std::string line =
      fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}.{:03} {}[{}] ", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  now.tv_usec / 1000, program_invocation_short_name, getpid());
  if (text.ends_with('\n')) text.remove_suffix(1);
  appendEscaped(line, text);
  line.push_back('\n');
  return line;
}

}  // namespace vt
