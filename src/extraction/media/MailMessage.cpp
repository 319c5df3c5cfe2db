#include "extraction/media/MailMessage.h"

#include <gmime/gmime.h>

#include <chrono>
#include <memory>
#include <vector>

#include "extraction/FoundAttributes.h"
#include "foundation/UTF8.h"

namespace vt {
namespace {

constexpr int kMostParts = 1000;
constexpr int kMostAddresses = 1000;
constexpr int kDeepestGroup = 4;

struct Unreference {
  void operator()(void* object) const { g_object_unref(object); }
};

struct Free {
  void operator()(char* text) const { g_free(text); }
  void operator()(GMimePartIter* parts) const { g_mime_part_iter_free(parts); }
};

std::string_view orEmpty(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

struct Person {
  std::string name;  // "" when the message gives none
  std::string address;
};

void gather(InternetAddressList* list, int depth, std::vector<Person>& people) {
  const int count = list == nullptr ? 0 : internet_address_list_length(list);
  for (int i = 0; i < count && people.size() < kMostAddresses; ++i) {
    InternetAddress* const address = internet_address_list_get_address(list, i);
    if (INTERNET_ADDRESS_IS_GROUP(address)) {
      if (depth < kDeepestGroup) {
        gather(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)), depth + 1,
               people);
      }
      continue;
    }
    people.push_back({tidiedText(orEmpty(internet_address_get_name(address))),
                      tidiedText(orEmpty(
                          internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(address))))});
  }
}

std::vector<Person> peopleIn(GMimeMessage& message,
                             std::initializer_list<GMimeAddressType> fields) {
  std::vector<Person> people;
  for (const GMimeAddressType field : fields) {
    gather(g_mime_message_get_addresses(&message, field), 0, people);
  }
  return people;
}

std::vector<Person> writersOf(GMimeMessage& message) {
  return peopleIn(message, {GMIME_ADDRESS_TYPE_FROM});
}

std::vector<Person> readersOf(GMimeMessage& message) {
  return peopleIn(message, {GMIME_ADDRESS_TYPE_TO, GMIME_ADDRESS_TYPE_CC, GMIME_ADDRESS_TYPE_BCC});
}

std::string headerOf(GMimeMessage& message, const char* name) {
  return tidiedText(orEmpty(g_mime_object_get_header(GMIME_OBJECT(&message), name)));
}

std::string decodedBytes(GMimePart* part) {
  const std::unique_ptr<GMimeStream, Unreference> memory(g_mime_stream_mem_new());
  g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(part), memory.get());
  const GByteArray* const bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(memory.get()));
  return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

/// The text of a part, in UTF-8 whatever it is said to be in.
std::string textOf(GMimeTextPart* part) {
  const std::string_view charset = orEmpty(g_mime_text_part_get_charset(part));
  const auto isSaidToBe = [&](const char* name) {
    return g_ascii_strncasecmp(charset.data(), name, charset.size() + 1) == 0;
  };
  if (!charset.empty() && !isSaidToBe("us-ascii") && !isSaidToBe("utf-8")) {
    const std::unique_ptr<char, Free> converted(g_mime_text_part_get_text(part));
    const std::string_view text = orEmpty(converted.get());
    if (!text.empty() && isValidUTF8(text)) return std::string(text);
  }
  return asUtf8(decodedBytes(GMIME_PART(part)));
}

/// Whether the same is there as plain text.
bool hasPlainSibling(GMimeObject* parent) {
  if (!GMIME_IS_MULTIPART(parent)) return false;
  if (!g_mime_content_type_is_type(g_mime_object_get_content_type(parent), "multipart",
                                   "alternative")) {
    return false;
  }
  auto* const parts = GMIME_MULTIPART(parent);
  for (int i = 0; i < std::min(g_mime_multipart_get_count(parts), kMostParts); ++i) {
    GMimeContentType* const type =
        g_mime_object_get_content_type(g_mime_multipart_get_part(parts, i));
    if (g_mime_content_type_is_type(type, "text", "plain")) return true;
  }
  return false;
}

void appendLine(std::string_view line, std::string& text) {
  if (!line.empty()) text.append(line).append("\n");
}

void appendPart(GMimeObject* object, GMimeObject* parent, const HtmlText& htmlText,
                std::string& text) {
  if (GMIME_IS_MESSAGE_PART(object)) {
    GMimeMessage* const inner = g_mime_message_part_get_message(GMIME_MESSAGE_PART(object));
    if (inner != nullptr) appendHead(*inner, text);
    return;
  }
  if (!GMIME_IS_PART(object)) return;
  auto* const part = GMIME_PART(object);
  const std::string name = tidiedText(orEmpty(g_mime_part_get_filename(part)));
  const bool isText = GMIME_IS_TEXT_PART(object) && g_mime_part_get_content(part) != nullptr;
  GMimeContentType* const type = g_mime_object_get_content_type(object);
  if (isText && g_mime_content_type_is_type(type, "text", "html")) {
    if (htmlText && !hasPlainSibling(parent)) {
      appendLine(htmlText(textOf(GMIME_TEXT_PART(object))), text);
    }
  } else if (isText) {
    appendLine(textOf(GMIME_TEXT_PART(object)), text);
  }
  appendLine(name, text);
}

}  // namespace

void tellMessage(GMimeMessage& message, FoundAttributes& found) {
  const std::string_view subject = orEmpty(g_mime_message_get_subject(&message));
  found.setText("kMDItemTitle", subject);
  found.setText("kMDItemSubject", subject);
  for (const Person& writer : writersOf(message)) {
    found.addText("kMDItemAuthors", writer.name.empty() ? writer.address : writer.name);
    found.addText("kMDItemAuthorEmailAddresses", writer.address);
    found.addText("kMDItemAuthorAddresses", writer.address);
  }
  for (const Person& reader : readersOf(message)) {
    found.addText("kMDItemRecipients", reader.name.empty() ? reader.address : reader.name);
    found.addText("kMDItemRecipientEmailAddresses", reader.address);
    found.addText("kMDItemRecipientAddresses", reader.address);
  }
  if (GDateTime* const date = g_mime_message_get_date(&message)) {
    found.setDate("kMDItemContentCreationDate",
                  Date{std::chrono::seconds{g_date_time_to_unix(date)}});
  }
  found.setText("kMDItemIdentifier", orEmpty(g_mime_message_get_message_id(&message)));
  found.setText("kMDItemCreator", headerOf(message, "X-Mailer"));
  found.setText("kMDItemCreator", headerOf(message, "User-Agent"));
  found.addText("kMDItemOrganizations", headerOf(message, "Organization"));
  found.addTexts("kMDItemKeywords", headerOf(message, "Keywords"), ",");
  found.addTexts("kMDItemLanguages", headerOf(message, "Content-Language"), ",");
  const std::string junk = headerOf(message, "X-Spam-Flag");
  if (!junk.empty()) {
    found.setBoolean("kMDItemIsLikelyJunk", g_ascii_strcasecmp(junk.c_str(), "yes") == 0);
  }
}

void appendHead(GMimeMessage& message, std::string& text) {
  appendLine(tidiedText(orEmpty(g_mime_message_get_subject(&message))), text);
  for (const auto& people : {writersOf(message), readersOf(message)}) {
    for (const Person& person : people) {
      appendLine(person.name, text);
      appendLine(person.address, text);
    }
  }
}

void appendBody(GMimeMessage& message, const HtmlText& htmlText, std::size_t mostBytes,
                std::string& text) {
  GMimeObject* const whole = g_mime_message_get_mime_part(&message);
  if (whole == nullptr) return;
  const std::unique_ptr<GMimePartIter, Free> parts(g_mime_part_iter_new(whole));
  for (int i = 0; i < kMostParts && g_mime_part_iter_is_valid(parts.get()); ++i) {
    GMimeObject* const parent = g_mime_part_iter_get_parent(parts.get());
    appendPart(g_mime_part_iter_get_current(parts.get()), parent, htmlText, text);
    if (text.size() >= mostBytes || !g_mime_part_iter_next(parts.get())) return;
  }
}

}  // namespace vt
