#pragma once

#include <string>

#include "foundation/Data.h"

namespace vt {

// Base64 with the line rules of OpenSSL's filter.

/// `encodeBase64`
/// In lines.
std::string encodeBase64(const Data& bytes);

/// `encodeBase64WithNewlines:`
/// With `newlines`, lines of 64 characters, each ended by a line feed, the last one too; without,
/// one line and no line feed. "" for no bytes.
std::string encodeBase64WithNewlines(const Data& bytes, bool newlines);

/// `decodeBase64`
/// From lines.
Data decodeBase64(const Data& text);

/// `decodeBase64WithNewLines:`
/// The bytes up to the first place that cannot be decoded, none perhaps. With `newLines` the text
/// is lines, each ended by a line feed and shorter than 1,024 characters: what is not decodes to
/// nothing. Without, it is one line without white space; of an unpadded one, the whole groups.
Data decodeBase64WithNewLines(const Data& text, bool newLines);

/// `hexval`
/// Two lowercase digits for each byte.
std::string hexval(const Data& bytes);

/// `hexdump`
/// The bytes in lines of 16, for people: an address in brackets, hexadecimal digits, and the ASCII
/// letters and digits among them, dots for the rest. The address is how far the byte lies from the
/// Data object itself in memory, and says nothing about its place in the data.
std::string hexdump(const Data& bytes);

}  // namespace vt
