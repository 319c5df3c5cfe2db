#pragma once

#include <cassert>
#include <utility>
#include <variant>

namespace vt {

/// Either a value or the error that says why there is none.
///
/// For bad input to an engine part (a query, a property list, a store file), where the caller wants
/// kind, position and the offending piece rather than an exception. `T` and `E` must differ.
template <class T, class E>
class [[nodiscard]] Result {
 public:
  Result(T value)  // NOLINT(google-explicit-constructor): `return value;` is the point of the type
      : state_(std::in_place_index<0>, std::move(value)) {}
  Result(E error)  // NOLINT(google-explicit-constructor): likewise `return error;`
      : state_(std::in_place_index<1>, std::move(error)) {}

  bool hasValue() const { return state_.index() == 0; }
  explicit operator bool() const { return hasValue(); }

  /// The value; it must be there.
  const T& value() const& {
    assert(hasValue());
    return std::get<0>(state_);
  }
  T& value() & {
    assert(hasValue());
    return std::get<0>(state_);
  }
  T&& value() && {
    assert(hasValue());
    return std::get<0>(std::move(state_));
  }
  const T& operator*() const& { return value(); }
  T& operator*() & { return value(); }
  const T* operator->() const { return &value(); }
  T* operator->() { return &value(); }

  /// The error; there must be one.
  const E& error() const {
    assert(!hasValue());
    return std::get<1>(state_);
  }

 private:
  std::variant<T, E> state_;
};

}  // namespace vt
