#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "foundation/Data.h"

namespace vt {

// Base64 as the <data> element holds it. (The filters with the line rules of OpenSSL are another
// thing and live with the other encodings.)

/// The bytes that `text` encodes; white space is passed over. Nothing for any other character, for
/// missing or surplus padding, and for set bits behind the last byte.
std::optional<Data> decodeBase64Strictly(std::string_view text);

/// Appends the padded encoding of `bytes`, without line breaks.
void appendBase64(std::string& text, std::span<const std::uint8_t> bytes);

}  // namespace vt
