#pragma once

#include <optional>
#include <string>

#include "foundation/Data.h"

namespace vt {

// Digests of bytes: 16 bytes for MD5, 20 for SHA-1, and the same as lowercase hexadecimal text.

Data md5Hash(const Data& bytes);
std::string md5HexHash(const Data& bytes);
Data sha1Hash(const Data& bytes);
std::string sha1HexHash(const Data& bytes);

// Digests of the UTF-8 bytes of a text; nil when it is not UTF-8.

std::optional<Data> md5Hash(const std::string& text);
std::optional<std::string> md5HexHash(const std::string& text);
std::optional<Data> sha1Hash(const std::string& text);
std::optional<std::string> sha1HexHash(const std::string& text);

}  // namespace vt
