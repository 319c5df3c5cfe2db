#pragma once

#include <string>
#include <string_view>

#include "extraction/BoundedText.h"
#include "metadata/extract/Extractor.h"

namespace vt {

/// What a page of HTML in UTF-8 holds: its text without scripts and styles, and what its head says
/// of it.
void readHtml(std::string_view page, Extraction& extraction);

/// The same for a page among others, as of a book: its text alone, behind what `text` has.
void appendHtmlText(std::string_view page, BoundedText& text);

/// That text of a page alone.
std::string textOfHtml(std::string_view page);

/// The name of the character set that the beginning of a page gives; "" when there is none.
std::string_view charsetNamedIn(std::string_view page);

}  // namespace vt
