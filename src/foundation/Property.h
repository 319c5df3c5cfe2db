#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "foundation/ObjectArray.h"
#include "foundation/VTObject.h"

namespace vt {

/// One property of a class as access by key sees it. A class keeps a `constexpr` array of these:
///
///     static constexpr Property kProperties[] = {
///         property<&VTShelf::title, &VTShelf::setTitle>("title"),
///         property<&VTShelf::count>("count"),
///     };
struct Property {
  std::string_view name;
  std::optional<Value> (*read)(const VTObject& object);
  /// Null for a read-only property.
  void (*write)(VTObject& object, const std::optional<Value>& value, std::string_view key);
};

/// The property of `table` called `key`, or nullptr.
const Property* findProperty(std::span<const Property> table, std::string_view key);

namespace property_detail {

[[noreturn]] void refuse(std::string_view key, const std::optional<Value>& value,
                         std::string_view wanted);
bool isNil(const std::optional<Value>& value);

template <class T>
struct IsSharedPointer : std::false_type {};
template <class T>
struct IsSharedPointer<std::shared_ptr<T>> : std::true_type {
  using Element = T;
};

/// How a property's own type and a value stand for each other.
template <class T>
struct Conversion {
  static std::optional<Value> toValue(const T& property) { return Value(property); }

  static T fromValue(const std::optional<Value>& value, std::string_view key)
    requires std::is_arithmetic_v<T>
  {
    if (isNil(value) || !(value->isNumber() || value->get<std::string>())) {
      refuse(key, value, "a number");
    }
    if constexpr (std::same_as<T, bool>) {
      return value->boolValue();
    } else if constexpr (std::floating_point<T>) {
      return static_cast<T>(value->doubleValue());
    } else if constexpr (std::unsigned_integral<T>) {
      return static_cast<T>(value->unsignedIntegerValue());
    } else {
      return static_cast<T>(value->integerValue());
    }
  }
};

template <>
struct Conversion<std::optional<Value>> {
  static std::optional<Value> toValue(std::optional<Value> property) { return property; }
  static std::optional<Value> fromValue(const std::optional<Value>& value, std::string_view) {
    return isNil(value) ? std::nullopt : value;
  }
};

template <>
struct Conversion<std::optional<std::string>> {
  static std::optional<Value> toValue(const std::optional<std::string>& property) {
    return property ? std::optional<Value>(*property) : std::nullopt;
  }
  static std::optional<std::string> fromValue(const std::optional<Value>& value,
                                              std::string_view key) {
    if (isNil(value)) return std::nullopt;
    if (!value->get<std::string>()) refuse(key, value, "a string");
    return *value->get<std::string>();
  }
};

template <>
struct Conversion<std::optional<Date>> {
  static std::optional<Value> toValue(const std::optional<Date>& property) {
    return property ? std::optional<Value>(*property) : std::nullopt;
  }
};

template <class T>
  requires IsSharedPointer<T>::value
struct Conversion<T> {
  static std::optional<Value> toValue(const T& property) {
    return property ? std::optional<Value>(property) : std::nullopt;
  }
  static T fromValue(const std::optional<Value>& value, std::string_view key) {
    using Element = typename IsSharedPointer<T>::Element;
    if (isNil(value)) return nullptr;
    T property;
    if constexpr (std::same_as<Element, Array>) {
      property = value->array();
    } else if constexpr (std::same_as<Element, Dictionary>) {
      property = value->dictionary();
    } else {
      property = std::dynamic_pointer_cast<Element>(value->object());
    }
    if (!property) refuse(key, value, "an object of the property's class");
    return property;
  }
};

template <class>
struct Getter;
template <class C, class R>
struct Getter<R (C::*)() const> {
  using Class = C;
  using Result = std::remove_cvref_t<R>;
};

template <class>
struct Setter;
template <class C, class A>
struct Setter<void (C::*)(A)> {
  using Class = C;
  using Argument = std::remove_cvref_t<A>;
};

}  // namespace property_detail

/// A read-only property, read through the member function `Get`.
template <auto Get>
constexpr Property property(std::string_view name) {
  using Getter = property_detail::Getter<decltype(Get)>;
  return {name,
          [](const VTObject& object) -> std::optional<Value> {
            const auto& self = static_cast<const typename Getter::Class&>(object);
            return property_detail::Conversion<typename Getter::Result>::toValue((self.*Get)());
          },
          nullptr};
}

/// A property read through `Get` and written through `Set`.
template <auto Get, auto Set>
constexpr Property property(std::string_view name) {
  using Setter = property_detail::Setter<decltype(Set)>;
  Property result = property<Get>(name);
  result.write = [](VTObject& object, const std::optional<Value>& value, std::string_view key) {
    auto& self = static_cast<typename Setter::Class&>(object);
    (self.*Set)(property_detail::Conversion<typename Setter::Argument>::fromValue(value, key));
  };
  return result;
}

}  // namespace vt
