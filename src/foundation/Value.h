#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "foundation/Data.h"
#include "foundation/Date.h"

namespace vt {

class Array;
class Dictionary;
class VTObject;

/// What a value is. The order is the rank by which values of unlike type sort.
enum class ValueKind : std::uint8_t {
  kNull,
  kBoolean,
  kInteger,
  kUnsignedInteger,
  kReal,
  kDate,
  kString,
  kData,
  kArray,
  kDictionary,
  kObject,
};

/// A property-list value, or an object handed through key-value coding.
///
/// Scalars, text and data are copied with the value; arrays and dictionaries are shared and mutable
/// in place, so two values may hold the very same dictionary. `Null` is the null *object*; the
/// absence of a value is a `std::optional<Value>` without one. An `Object` stands in no property
/// list: writing one fails.
class Value {
 public:
  Value() = default;

  // Implicit, since `dictionary.set("download", 1)` is how all of this tree writes values.
  // NOLINTBEGIN(google-explicit-constructor)
  Value(std::nullptr_t) {}
  template <std::same_as<bool> B>
  Value(B boolean) : storage_(boolean) {}
  template <std::signed_integral I>
  Value(I integer) : storage_(static_cast<std::int64_t>(integer)) {}
  template <std::unsigned_integral U>
    requires(!std::same_as<U, bool>)
  Value(U integer) : storage_(static_cast<std::uint64_t>(integer)) {}
  Value(double real) : storage_(real) {}
  Value(Date date) : storage_(date) {}
  Value(std::string text) : storage_(std::move(text)) {}
  Value(std::string_view text) : storage_(std::string(text)) {}
  Value(const char* text) : storage_(std::string(text)) {}
  Value(Data data) : storage_(std::move(data)) {}
  /// A null pointer gives the null object.
  Value(std::shared_ptr<Array> array);
  Value(std::shared_ptr<Dictionary> dictionary);
  Value(std::shared_ptr<VTObject> object);
  // NOLINTEND(google-explicit-constructor)

  ValueKind kind() const { return static_cast<ValueKind>(storage_.index()); }
  bool isNull() const { return kind() == ValueKind::kNull; }
  /// Whether this is a boolean, an integer of either sign or a real.
  bool isNumber() const;

  /// The stored alternative, or nullptr when the value is of another kind. `T` is one of bool,
  /// int64_t, uint64_t, double, Date, std::string, Data.
  template <class T>
  const T* get() const {
    return std::get_if<T>(&storage_);
  }
  template <class T>
  T* get() {
    return std::get_if<T>(&storage_);
  }
  /// The shared container or object; nullptr when the value is of another kind.
  std::shared_ptr<Array> array() const;
  std::shared_ptr<Dictionary> dictionary() const;
  std::shared_ptr<VTObject> object() const;

  /// The readings that numbers and strings have. A string is true when it begins, after blanks and
  /// an optional sign and zeros, with one of Y, y, T, t, 1 to 9; its integer is the decimal number
  /// at its start, 0 when there is none. Out of range clamps. Any other kind is false and 0.
  bool boolValue() const;
  std::int64_t integerValue() const;
  /// The reading as an unsigned number: a negative one wraps as a conversion of its bits does.
  std::uint64_t unsignedIntegerValue() const;
  /// The low 32 bits of integerValue().
  std::int32_t intValue() const;
  double doubleValue() const;

  /// Deep equality. Numbers of different kind are equal when they stand for the same number;
  /// dictionaries regardless of order; objects by identity.
  friend bool operator==(const Value& a, const Value& b);

 private:
  using Storage = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, Date,
                               std::string, Data, std::shared_ptr<Array>,
                               std::shared_ptr<Dictionary>, std::shared_ptr<VTObject>>;

  Storage storage_;
};

/// The natural order of two values: -1, 0 or 1. Numbers by size, dates by time, text by code point,
/// data by byte; values of unlike type by the rank of their type; containers and objects of one
/// type are not told apart.
int compareNaturally(const Value& a, const Value& b);

/// What the value is called in messages: "a string", "a date".
std::string_view describeKind(ValueKind kind);

}  // namespace vt
