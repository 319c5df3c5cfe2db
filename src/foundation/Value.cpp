#include "foundation/Value.h"

#include <charconv>
#include <cmath>
#include <compare>
#include <limits>

#include "foundation/Array.h"
#include "foundation/Dictionary.h"

namespace vt {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

int sign(std::partial_ordering order) { return order < 0 ? -1 : order > 0 ? 1 : 0; }

std::string_view afterBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return start == std::string_view::npos ? std::string_view{} : text.substr(start);
}

bool textIsTrue(std::string_view text) {
  text = afterBlanks(text);
  if (!text.empty() && (text.front() == '+' || text.front() == '-')) text.remove_prefix(1);
  while (!text.empty() && text.front() == '0') text.remove_prefix(1);
  if (text.empty()) return false;
  const char first = text.front();
  return first == 'Y' || first == 'y' || first == 'T' || first == 't' ||
         (first >= '1' && first <= '9');
}

std::int64_t textAsInteger(std::string_view text) {
  text = afterBlanks(text);
  if (!text.empty() && text.front() == '+') {
    text.remove_prefix(1);
    if (!text.empty() && text.front() == '-') return 0;
  }
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::result_out_of_range) {
    return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                               : std::numeric_limits<std::int64_t>::max();
  }
  return number;
}

double textAsDouble(std::string_view text) {
  text = afterBlanks(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  // A second sign, or the words for infinity and NaN, which from_chars would take.
  if (text.empty() || !(text.front() == '.' || (text.front() >= '0' && text.front() <= '9'))) {
    return 0;
  }
  double number = 0;
  const char* const start = text.data();
  const auto [end, error] = std::from_chars(start, start + text.size(), number);
  if (error == std::errc::result_out_of_range) {
    const std::string_view digits(start, end);
    const bool isTiny = digits.find("e-") != std::string_view::npos ||
                        digits.find("E-") != std::string_view::npos || digits.front() == '.' ||
                        digits.starts_with("0.");
    number = isTiny ? 0 : std::numeric_limits<double>::infinity();
  }
  return negative ? -number : number;
}

std::int64_t realAsInteger(double real) {
  if (std::isnan(real)) return 0;
  if (real >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
  if (real < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(real);
}

// A number as the pair that orders exactly: integers must not pass through a double, which cannot
// tell 2^63 from 2^63 - 1.
struct Number {
  bool isReal;
  bool isUnsigned;
  std::int64_t integer;
  std::uint64_t unsignedInteger;
  double real;
};

Number numberOf(const Value& value) {
  switch (value.kind()) {
    case ValueKind::kBoolean:
      return {false, false, *value.get<bool>() ? 1 : 0, 0, 0};
    case ValueKind::kInteger:
      return {false, false, *value.get<std::int64_t>(), 0, 0};
    case ValueKind::kUnsignedInteger:
      return {false, true, 0, *value.get<std::uint64_t>(), 0};
    default:
      return {true, false, 0, 0, *value.get<double>()};
  }
}

double asReal(const Number& number) {
  if (number.isReal) return number.real;
  return number.isUnsigned ? static_cast<double>(number.unsignedInteger)
                           : static_cast<double>(number.integer);
}

// NaN equals itself and comes before every number: a sort needs one order of all values.
int compareReals(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return (std::isnan(b) ? 1 : 0) - (std::isnan(a) ? 1 : 0);
  return sign(a <=> b);
}

int compareIntegerToReal(const Number& integer, double real) {
  if (std::isnan(real)) return 1;
  if (real >= 2 * kTwoTo63) return -1;
  if (real < -kTwoTo63) return 1;
  const double whole = std::floor(real);
  const int fraction = real > whole ? -1 : 0;
  const bool isNegative = !integer.isUnsigned && integer.integer < 0;
  if (whole < 0) {
    if (!isNegative) return 1;
    const int order = sign(integer.integer <=> static_cast<std::int64_t>(whole));
    return order != 0 ? order : fraction;
  }
  if (isNegative) return -1;
  const std::uint64_t magnitude =
      integer.isUnsigned ? integer.unsignedInteger : static_cast<std::uint64_t>(integer.integer);
  const int order = sign(magnitude <=> static_cast<std::uint64_t>(whole));
  return order != 0 ? order : fraction;
}

int compareNumbers(const Value& left, const Value& right) {
  const Number a = numberOf(left);
  const Number b = numberOf(right);
  if (a.isReal && b.isReal) return compareReals(a.real, b.real);
  if (b.isReal) return compareIntegerToReal(a, b.real);
  if (a.isReal) return -compareIntegerToReal(b, a.real);
  if (a.isUnsigned && b.isUnsigned) return sign(a.unsignedInteger <=> b.unsignedInteger);
  if (!a.isUnsigned && !b.isUnsigned) return sign(a.integer <=> b.integer);
  if (a.isUnsigned) {
    return b.integer < 0 ? 1 : sign(a.unsignedInteger <=> static_cast<std::uint64_t>(b.integer));
  }
  return a.integer < 0 ? -1 : sign(static_cast<std::uint64_t>(a.integer) <=> b.unsignedInteger);
}

int rank(const Value& value) {
  return value.isNumber() ? static_cast<int>(ValueKind::kInteger) : static_cast<int>(value.kind());
}

}  // namespace

Value::Value(std::shared_ptr<Array> array) {
  if (array) storage_ = std::move(array);
}

Value::Value(std::shared_ptr<Dictionary> dictionary) {
  if (dictionary) storage_ = std::move(dictionary);
}

Value::Value(std::shared_ptr<VTObject> object) {
  if (object) storage_ = std::move(object);
}

bool Value::isNumber() const { return kind() >= ValueKind::kBoolean && kind() <= ValueKind::kReal; }

std::shared_ptr<Array> Value::array() const {
  const auto* array = std::get_if<std::shared_ptr<Array>>(&storage_);
  return array ? *array : nullptr;
}

std::shared_ptr<Dictionary> Value::dictionary() const {
  const auto* dictionary = std::get_if<std::shared_ptr<Dictionary>>(&storage_);
  return dictionary ? *dictionary : nullptr;
}

std::shared_ptr<VTObject> Value::object() const {
  const auto* object = std::get_if<std::shared_ptr<VTObject>>(&storage_);
  return object ? *object : nullptr;
}

bool Value::boolValue() const {
  switch (kind()) {
    case ValueKind::kBoolean:
      return *get<bool>();
    case ValueKind::kInteger:
      return *get<std::int64_t>() != 0;
    case ValueKind::kUnsignedInteger:
      return *get<std::uint64_t>() != 0;
    case ValueKind::kReal:
      return *get<double>() != 0;
    case ValueKind::kString:
      return textIsTrue(*get<std::string>());
    default:
      return false;
  }
}

std::int64_t Value::integerValue() const {
  switch (kind()) {
    case ValueKind::kBoolean:
      return *get<bool>() ? 1 : 0;
    case ValueKind::kInteger:
      return *get<std::int64_t>();
    case ValueKind::kUnsignedInteger:
      return static_cast<std::int64_t>(*get<std::uint64_t>());
    case ValueKind::kReal:
      return realAsInteger(*get<double>());
    case ValueKind::kString:
      return textAsInteger(*get<std::string>());
    default:
      return 0;
  }
}

std::uint64_t Value::unsignedIntegerValue() const {
  if (const double* real = get<double>(); real && *real >= kTwoTo63) {
    return *real >= 2 * kTwoTo63 ? std::numeric_limits<std::uint64_t>::max()
                                 : static_cast<std::uint64_t>(*real);
  }
  return static_cast<std::uint64_t>(integerValue());
}

std::int32_t Value::intValue() const {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(unsignedIntegerValue()));
}

double Value::doubleValue() const {
  if (const std::string* text = get<std::string>()) return textAsDouble(*text);
  return isNumber() ? asReal(numberOf(*this)) : 0;
}

bool operator==(const Value& a, const Value& b) {
  if (a.isNumber() && b.isNumber()) return compareNumbers(a, b) == 0;
  if (a.kind() != b.kind()) return false;
  switch (a.kind()) {
    case ValueKind::kArray:
      return *a.array() == *b.array();
    case ValueKind::kDictionary:
      return *a.dictionary() == *b.dictionary();
    default:
      return a.storage_ == b.storage_;
  }
}

int compareNaturally(const Value& a, const Value& b) {
  if (a.isNumber() && b.isNumber()) return compareNumbers(a, b);
  if (const int byRank = sign(rank(a) <=> rank(b)); byRank != 0) return byRank;
  switch (a.kind()) {
    case ValueKind::kDate:
      return sign(*a.get<Date>() <=> *b.get<Date>());
    case ValueKind::kString:
      // UTF-8 orders by byte as its code points do.
      return sign(a.get<std::string>()->compare(*b.get<std::string>()) <=> 0);
    case ValueKind::kData:
      return sign(*a.get<Data>() <=> *b.get<Data>());
    default:
      return 0;
  }
}

std::string_view describeKind(ValueKind kind) {
  switch (kind) {
    case ValueKind::kNull:
      return "null";
    case ValueKind::kBoolean:
      return "a boolean";
    case ValueKind::kInteger:
    case ValueKind::kUnsignedInteger:
      return "an integer";
    case ValueKind::kReal:
      return "a real number";
    case ValueKind::kDate:
      return "a date";
    case ValueKind::kString:
      return "a string";
    case ValueKind::kData:
      return "data";
    case ValueKind::kArray:
      return "an array";
    case ValueKind::kDictionary:
      return "a dictionary";
    case ValueKind::kObject:
      return "an object";
  }
  return "unknown";
}

}  // namespace vt
