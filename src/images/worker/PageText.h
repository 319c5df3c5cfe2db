#pragma once

#include <string>
#include <string_view>

namespace vt::worker {

// What a text file becomes before it is set on a page.

/// The bytes, in whatever character set (decodePlainText()), as UTF-8 without control characters
/// but line feeds and tabs.
std::string readableText(std::string_view bytes);

/// The text of an HTML document: no tags, scripts or styles, a line for each block, the common
/// named and all numbered entities as their characters.
std::string textOfHtml(std::string_view html);

/// The same text with its headings, emphasis, code, quotes and list points as markup of Pango.
/// Everything else of the text is escaped.
std::string markupOfMarkdown(std::string_view markdown);

}  // namespace vt::worker
