#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/PropertyListError.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vt {

/// A tree as one line of ASCII that leaves nothing out: i7 r3ff0000000000000 d<microseconds since
/// 1970> s"text" x<hex> [a,b] {"key":value}; bytes of text outside 0x20 to 0x7e as \xNN.
std::string dump(const Value& value);

/// The dump of what was read, or "kind line:offset" of the error: "structure 3:45".
std::string outcome(const Result<Value, PropertyListError>& result);

std::string_view nameOf(PropertyListErrorKind kind);

/// The bytes that pairs of hexadecimal digits spell; blanks are passed over.
std::string fromHex(std::string_view digits);

/// A binary property list with one-byte references and offsets of two bytes, from its objects in
/// hexadecimal; the first is the root.
std::string binaryPropertyList(const std::vector<std::string>& objectsInHex);

/// A container of the same kind in itself, `depth` times; the innermost is empty.
Value nestedArrays(int depth);

}  // namespace vt
