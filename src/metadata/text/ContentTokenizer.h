#pragma once

#include <string>
#include <string_view>

#include "metadata/database/Database.h"
#include "metadata/query/WordBoundaries.h"
#include "metadata/text/ContentTerms.h"

namespace vt {

/// What the full-text tables of a catalogue name their tokenizer.
inline constexpr const char* kContentTokenizer = "vistaro";

/// The terms of a content in one text, `see` being told of each: what the tokenizer is given.
std::string tokenText(const query::SegmentedText& content,
                      FunctionRef<void(const ContentTerm& term)> see);

/// Makes the tokenizer known to the connection. It gives the terms of a tokenText(), and of a
/// phrase in a query what blanks part.
StoreFailure addContentTokenizer(const Database& database);

}  // namespace vt
