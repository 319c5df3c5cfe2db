#include "metadata/store/Manifest.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "metadata/store/FileWriter.h"

namespace vt {
namespace {

constexpr std::string_view kFirstLine = "vistaro-index 2\n";
constexpr std::string_view kChecksumWord = "checksum ";
constexpr std::size_t kChecksumLineBytes = kChecksumWord.size() + 16 + 1;

bool isPlain(char c) { return c > ' ' && c < 0x7F && c != '%'; }

std::string escaped(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    if (isPlain(c)) {
      text += c;
    } else {
      fmt::format_to(std::back_inserter(text), "%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return text;
}

std::string checksumLine(std::string_view text) {
  return fmt::format("{}{:016x}\n", kChecksumWord, checksumOf(text));
}

std::int64_t countOf(Date date) { return date.time_since_epoch().count(); }

/// Takes the lines of a manifest apart. Lenient, since what it has read is compared with the text.
class ManifestReader {
 public:
  explicit ManifestReader(std::string_view text) : rest_(text) {}

  Manifest read() {
    Manifest manifest;
    manifest.generation = number<std::uint64_t>("generation");
    while (begins("segment")) {
      SegmentRecord record;
      record.file = unescaped(word("segment"));
      record.identity.bytes = numberIn<std::uint64_t>(nextWord(), 10);
      record.identity.headChecksum = numberIn<std::uint64_t>(nextWord(), 16);
      manifest.segments.push_back(std::move(record));
    }
    while (begins("root")) manifest.roots.push_back(unescaped(word("root")));
    manifest.began = date("began");
    manifest.ended = date("ended");
    manifest.duration = std::chrono::microseconds(number<std::int64_t>("duration"));
    manifest.vouched = date("vouched");
    return manifest;
  }

 private:
  bool begins(std::string_view key) const {
    return rest_.starts_with(key) && rest_.substr(key.size()).starts_with(' ');
  }
  /// What stands behind `key` and a space, up to the next space or end of line; "" if nothing does.
  std::string_view word(std::string_view key) {
    if (!begins(key)) return {};
    rest_.remove_prefix(key.size() + 1);
    return nextWord();
  }
  std::string_view nextWord() {
    const std::string_view found = rest_.substr(0, rest_.find_first_of(" \n"));
    rest_.remove_prefix(std::min(found.size() + 1, rest_.size()));
    return found;
  }
  template <class Number>
  static Number numberIn(std::string_view digits, int base) {
    Number number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, base);
    return number;
  }
  template <class Number>
  Number number(std::string_view key) {
    return numberIn<Number>(word(key), 10);
  }
  Date date(std::string_view key) {
    return Date{std::chrono::microseconds{number<std::int64_t>(key)}};
  }

  static std::string unescaped(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
      const bool isEscape = text.front() == '%' && text.size() >= 3;
      bytes +=
          isEscape ? static_cast<char>(numberIn<unsigned>(text.substr(1, 2), 16)) : text.front();
      text.remove_prefix(isEscape ? 3 : 1);
    }
    return bytes;
  }

  std::string_view rest_;
};

}  // namespace

std::string printManifest(const Manifest& manifest) {
  std::string text(kFirstLine);
  const auto add = std::back_inserter(text);
  fmt::format_to(add, "generation {}\n", manifest.generation);
  for (const SegmentRecord& segment : manifest.segments) {
    fmt::format_to(add, "segment {} {} {:016x}\n", escaped(segment.file), segment.identity.bytes,
                   segment.identity.headChecksum);
  }
  for (const std::string& root : manifest.roots) {
    fmt::format_to(add, "root {}\n", escaped(root));
  }
  fmt::format_to(add, "began {}\nended {}\nduration {}\nvouched {}\n", countOf(manifest.began),
                 countOf(manifest.ended), manifest.duration.count(), countOf(manifest.vouched));
  text += checksumLine(text);
  return text;
}

Result<Manifest, StoreError> parseManifest(std::string_view text, std::string_view shownPath) {
  const std::string_view body =
      text.substr(0, text.size() - std::min(text.size(), kChecksumLineBytes));
  if (text.substr(body.size()) != checksumLine(body)) {
    return damageError(shownPath, "it is not as written");
  }
  if (!body.starts_with(kFirstLine)) {
    return StoreError{StoreError::Kind::kOtherKind,
                      fmt::format("{} is of another version of the index format", shownPath)};
  }
  Manifest manifest = ManifestReader(body.substr(kFirstLine.size())).read();
  if (printManifest(manifest) != text) return damageError(shownPath, "it makes no sense");
  return manifest;
}

}  // namespace vt
