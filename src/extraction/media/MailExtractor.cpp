#include "extraction/media/MailExtractor.h"

#include <gmime/gmime.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "extraction/FoundAttributes.h"
#include "extraction/LookTime.h"
#include "extraction/media/MailMessage.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

constexpr std::size_t kMostTextBytes = std::size_t{16} << 20;

struct Unreference {
  void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using Owned = std::unique_ptr<T, Unreference>;

struct FreeOptions {
  void operator()(GMimeParserOptions* options) const { g_mime_parser_options_free(options); }
};

/// Where the message is that is counted in the first line of the file; nothing without such a line.
std::optional<std::pair<off_t, off_t>> countedMessageIn(int file) {
  std::array<char, 32> line{};  // which ends with zeros, however full it is
  const ssize_t count = ::pread(file, line.data(), line.size() - 1, 0);
  if (count <= 0) return std::nullopt;
  char* end = nullptr;
  const long length = std::strtol(line.data(), &end, 10);
  while (*end == ' ') ++end;
  if (end == line.data() || *end != '\n' || length <= 0) return std::nullopt;
  const off_t start = end + 1 - line.data();
  return std::pair{start, start + length};
}

/// `mostBytes` of the text at most, whole characters.
void cut(std::string& text, std::size_t mostBytes) {
  if (text.size() <= mostBytes) return;
  text.resize(mostBytes);
  text.resize(validUTF8Length(text));
}

/// Whether the parser has understood any line as one of a message's head.
bool isMessage(GMimeMessage& message) {
  return g_mime_header_list_get_count(g_mime_object_get_header_list(GMIME_OBJECT(&message))) > 0;
}

}  // namespace

MailExtractor::MailExtractor(const ContentTypes& types, HtmlText htmlText)
    : types_(types, {"public.email-message", "org.ietf.mbox"},
             {"com.microsoft.outlook.msg", "com.microsoft.outlook.oft", "public.fax"}),
      mailboxes_(types, {"org.ietf.mbox"}),
      counted_(types, {"com.apple.mail.emlx"}),
      htmlText_(std::move(htmlText)) {
  g_mime_init();
}

Result<Extraction, ExtractionFailure> MailExtractor::extract(int file, ContentTypeId type) {
  off_t start = 0;
  off_t end = -1;  // that of the file
  if (counted_.contains(type)) {
    const auto message = countedMessageIn(file);
    if (!message) {
      return ExtractionFailure{ExtractionFailure::Kind::kMalformed,
                               "it does not begin with a count"};
    }
    std::tie(start, end) = *message;
  }
  const Owned<GMimeStream> stream(g_mime_stream_fs_new_with_bounds(file, start, end));
  g_mime_stream_fs_set_owner(GMIME_STREAM_FS(stream.get()), /*owner=*/FALSE);
  const Owned<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  const bool isMailbox = mailboxes_.contains(type);
  g_mime_parser_set_format(parser.get(), isMailbox ? GMIME_FORMAT_MBOX : GMIME_FORMAT_MESSAGE);
  const std::unique_ptr<GMimeParserOptions, FreeOptions> options(g_mime_parser_options_new());
  const char* fallbacks[] = {"utf-8", "windows-1252", nullptr};
  g_mime_parser_options_set_fallback_charsets(options.get(), fallbacks);

  Extraction extraction;
  FoundAttributes found(extraction);
  extraction.text.emplace();
  bool isKnown = false;
  do {
    const Owned<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), options.get()));
    if (!message || !isMessage(*message)) break;
    isKnown = true;
    if (isMailbox) {
      appendHead(*message, *extraction.text);
    } else {
      tellMessage(*message, found);
    }
    appendBody(*message, htmlText_, kMostTextBytes, *extraction.text);
  } while (isMailbox && extraction.text->size() < kMostTextBytes && !isTimeShort() &&
           !g_mime_parser_eos(parser.get()));
  if (!isKnown) {
    return ExtractionFailure{ExtractionFailure::Kind::kMalformed, "it holds no message"};
  }
  cut(*extraction.text, kMostTextBytes);
  return extraction;
}

}  // namespace vt
