#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <string_view>

#include "Conversion.h"
#include "Outcome.h"
#include "Wrapper.h"
#include "foundation/ObjectArray.h"

namespace vt::ruby {
namespace {

// As deep as a property list may be; and no deeper than the stack of a thread of Ruby's bears.
constexpr int kMostNested = 512;

[[noreturn]] void refuse(std::string_view wanted, VALUE ruby) {
  throw InvalidArgumentError(
      fmt::format("expected {}, not {}", wanted, NIL_P(ruby) ? "nil" : rb_obj_classname(ruby)));
}

[[noreturn]] void refuseNesting() {
  throw InvalidArgumentError("nested too deep, or inside itself");
}

std::string_view bytesOf(VALUE string) {
  return {RSTRING_PTR(string), static_cast<std::size_t>(RSTRING_LEN(string))};
}

bool isBinary(VALUE string) { return rb_enc_get_index(string) == rb_ascii8bit_encindex(); }

std::string textOfString(VALUE string) {
  VALUE converted =
      protect([string] { return rb_str_conv_enc(string, rb_enc_get(string), rb_utf8_encoding()); });
  const int encoding = rb_enc_get_index(converted);
  if (encoding != rb_utf8_encindex() && encoding != rb_usascii_encindex() && !isBinary(converted)) {
    throw InvalidArgumentError("a text that UTF-8 cannot hold");
  }
  std::string text(bytesOf(converted));
  RB_GC_GUARD(converted);
  return text;
}

Date dateFromTime(VALUE time) {
  timespec moment{};
  protect([&] {
    moment = rb_time_timespec(time);
    return Qnil;
  });
  constexpr std::int64_t kMostSeconds = std::numeric_limits<std::int64_t>::max() / 1'000'000;
  if (moment.tv_sec >= kMostSeconds || moment.tv_sec <= -kMostSeconds) {
    throw InvalidArgumentError("a time out of range");
  }
  return dateFromTimespec(moment);
}

/// An Integer of up to 64 bits: its magnitude, and whether it is negative.
struct Integer {
  std::uint64_t magnitude;
  bool isNegative;
};

Integer integerFromRuby(VALUE ruby) {
  if (FIXNUM_P(ruby)) {
    const long number = FIX2LONG(ruby);
    return {
        number < 0 ? 0 - static_cast<std::uint64_t>(number) : static_cast<std::uint64_t>(number),
        number < 0};
  }
  if (!RB_TYPE_P(ruby, T_BIGNUM)) refuse("an Integer", ruby);
  std::uint64_t magnitude = 0;
  const int sign =
      rb_integer_pack(ruby, &magnitude, 1, sizeof magnitude, 0, INTEGER_PACK_NATIVE_BYTE_ORDER);
  if (sign > 1 || sign < -1) throw InvalidArgumentError("an Integer of more than 64 bits");
  return {magnitude, sign < 0};
}

Value numberFromRuby(VALUE ruby) {
  const Integer integer = integerFromRuby(ruby);
  if (!integer.isNegative && integer.magnitude > std::numeric_limits<std::int64_t>::max()) {
    return integer.magnitude;
  }
  return signedFromRuby(ruby);
}

Value nestedFromRuby(VALUE ruby, int depth);

std::shared_ptr<Array> arrayFromRuby(VALUE ruby, int depth) {
  auto array = Array::make();
  // Asked anew each time: nothing here runs Ruby code, and yet the length is the truth.
  for (long i = 0; i < RARRAY_LEN(ruby); ++i) {
    array->append(nestedFromRuby(rb_ary_entry(ruby, i), depth));
  }
  return array;
}

struct HashReading {
  Dictionary& dictionary;
  int depth;
  Outcome outcome;
};

int readEntry(VALUE key, VALUE value, VALUE argument) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): Ruby hands on an integer only.
  HashReading& reading = *reinterpret_cast<HashReading*>(argument);
  contain(reading.outcome, [&](Outcome&) {
    reading.dictionary.set(textFromRuby(key), nestedFromRuby(value, reading.depth));
  });
  return reading.outcome.hasFailed() ? ST_STOP : ST_CONTINUE;
}

std::shared_ptr<Dictionary> dictionaryFromRuby(VALUE ruby, int depth) {
  auto dictionary = Dictionary::make();
  HashReading reading{*dictionary, depth, {}};
  protect([&] {
    rb_hash_foreach(ruby, readEntry, reinterpret_cast<VALUE>(&reading));
    return Qnil;
  });
  if (reading.outcome.hasFailed()) {
    protect([&] { return reading.outcome.finish(); });
  }
  return dictionary;
}

void refuseCycleAt(const void* container, const Value& value, int depth) {
  if (depth > kMostNested) refuseNesting();
  if (const auto array = value.array()) {
    if (array.get() == container) refuseNesting();
    for (const Value& element : *array) refuseCycleAt(container, element, depth + 1);
  } else if (const auto dictionary = value.dictionary()) {
    if (dictionary.get() == container) refuseNesting();
    for (const auto& [key, element] : *dictionary) refuseCycleAt(container, element, depth + 1);
  }
}

Value nestedFromRuby(VALUE ruby, int depth) {
  if (depth > kMostNested) refuseNesting();
  switch (rb_type(ruby)) {
    case T_NIL:
      return nullptr;
    case T_TRUE:
      return true;
    case T_FALSE:
      return false;
    case T_FIXNUM:
    case T_BIGNUM:
      return numberFromRuby(ruby);
    case T_FLOAT:
      return RFLOAT_VALUE(ruby);
    case T_STRING:
      if (isBinary(ruby)) return Data(bytesOf(ruby));
      return textOfString(ruby);
    case T_SYMBOL:
      return textFromRuby(ruby);
    case T_ARRAY:
      return arrayFromRuby(ruby, depth + 1);
    case T_HASH:
      return dictionaryFromRuby(ruby, depth + 1);
    default:
      break;
  }
  if (const auto* dictionary = shownDictionary(ruby)) return *dictionary;
  if (const auto* array = shownArray(ruby)) return *array;
  if (const auto* object = shownObject(ruby)) return *object;
  if (RTEST(rb_obj_is_kind_of(ruby, rb_cTime))) return dateFromTime(ruby);
  refuse("a property-list value", ruby);
}

}  // namespace

Value valueFromRuby(VALUE ruby) { return nestedFromRuby(ruby, 0); }

std::optional<Value> optionalValueFromRuby(VALUE ruby) {
  if (NIL_P(ruby)) return std::nullopt;
  return valueFromRuby(ruby);
}

std::string textFromRuby(VALUE ruby) {
  if (SYMBOL_P(ruby)) ruby = protect([ruby] { return rb_sym2str(ruby); });
  if (!RB_TYPE_P(ruby, T_STRING)) refuse("a String", ruby);
  return textOfString(ruby);
}

Data dataFromRuby(VALUE ruby) {
  if (!RB_TYPE_P(ruby, T_STRING)) refuse("a String of bytes", ruby);
  return Data(bytesOf(ruby));
}

bool booleanFromRuby(VALUE ruby) {
  if (ruby == Qtrue) return true;
  if (!RTEST(ruby)) return false;
  if (!FIXNUM_P(ruby)) refuse("true or false", ruby);
  return FIX2LONG(ruby) != 0;
}

std::int64_t signedFromRuby(VALUE ruby) {
  const Integer integer = integerFromRuby(ruby);
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  if (integer.magnitude > kMost + (integer.isNegative ? 1 : 0)) {
    throw InvalidArgumentError("an Integer out of range");
  }
  const std::uint64_t bits = integer.isNegative ? 0 - integer.magnitude : integer.magnitude;
  return static_cast<std::int64_t>(bits);
}

std::uint64_t unsignedFromRuby(VALUE ruby) {
  const Integer integer = integerFromRuby(ruby);
  if (integer.isNegative) throw InvalidArgumentError("expected an Integer that is not negative");
  return integer.magnitude;
}

double realFromRuby(VALUE ruby) {
  if (RB_FLOAT_TYPE_P(ruby)) return RFLOAT_VALUE(ruby);
  const Integer integer = integerFromRuby(ruby);
  const auto magnitude = static_cast<double>(integer.magnitude);
  return integer.isNegative ? -magnitude : magnitude;
}

void refuseCycle(const void* container, const Value& value) { refuseCycleAt(container, value, 0); }

}  // namespace vt::ruby
