#pragma once

#include <string>

#include "extraction/media/MailExtractor.h"

// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the library's name
typedef struct _GMimeMessage GMimeMessage;

namespace vt {

class FoundAttributes;

/// Tells what the head of a message says.
void tellMessage(GMimeMessage& message, FoundAttributes& found);

/// Appends subject, writer and readers of a message, each in a line.
void appendHead(GMimeMessage& message, std::string& text);

/// Appends the words of a message and those in it, and the names of what is attached, while the
/// text is shorter than `mostBytes`.
void appendBody(GMimeMessage& message, const HtmlText& htmlText, std::size_t mostBytes,
                std::string& text);

}  // namespace vt
