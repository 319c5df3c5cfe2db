#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Ruby.h"
#include "foundation/Data.h"
#include "foundation/Value.h"

namespace vt::ruby {

// From Ruby. These raise nothing in Ruby; each throws InvalidArgumentError for what has no reading
// as what is wanted. None changes what it reads.

/// nil is the null object; a binary (ASCII-8BIT) String is data, any other text; a Symbol is text;
/// a Time a date. A Hash or Array becomes a new dictionary or array, and one of our own stays the
/// one that it is. Any other object of the library goes as an object.
Value valueFromRuby(VALUE ruby);
/// The same, and nothing for nil.
std::optional<Value> optionalValueFromRuby(VALUE ruby);
/// The UTF-8 bytes of a String or Symbol; the bytes as they are of one that is binary or broken.
std::string textFromRuby(VALUE ruby);
/// The bytes of a String.
Data dataFromRuby(VALUE ruby);
/// nil and 0 are false too.
bool booleanFromRuby(VALUE ruby);
std::int64_t signedFromRuby(VALUE ruby);
std::uint64_t unsignedFromRuby(VALUE ruby);
double realFromRuby(VALUE ruby);

/// Throws InvalidArgumentError when `value` holds `container`, at whatever depth, or is nested too
/// deep: what holds itself can be neither compared nor freed.
void refuseCycle(const void* container, const Value& value);

// To Ruby. These may raise: to be called within protect().

/// Text comes as UTF-8, data as a binary String, a date as a Time, the null object as nil, a
/// container as what shows it, `frozen` or not.
VALUE valueToRuby(const Value& value, bool frozen);
VALUE textToRuby(std::string_view text);

}  // namespace vt::ruby
