#pragma once

#include <optional>
#include <string>

#include "foundation/Data.h"

namespace vt {

/// `dataWithBase64EncodedString:`
/// The bytes that `text` encodes. White space and "=" are passed over wherever they stand, so text
/// without padding decodes too. Nil for a character outside ASCII and the alphabet, and when a
/// single character is left over at the end. Throws InvalidArgumentError for nil.
std::optional<Data> dataWithBase64EncodedString(const std::optional<std::string>& text);

/// `base64Encoding`
/// The standard encoding, padded, without line breaks; "" for no bytes.
std::string base64Encoding(const Data& bytes);

}  // namespace vt
