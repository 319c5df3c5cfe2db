#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "Conversion.h"
#include "Outcome.h"
#include "Wrapper.h"
#include "foundation/ObjectArray.h"

namespace vt::ruby {

/// What a Ruby value is for a parameter of type `Parameter`: made of the value, it converts to the
/// parameter. Made before the call and destroyed after it. Throws InvalidArgumentError when the
/// value has no reading as such.
template <class Parameter>
struct Argument;

/// A conversion that makes what is passed.
template <class T, T (*Convert)(VALUE)>
struct ConvertedArgument {
  explicit ConvertedArgument(VALUE ruby) : value(Convert(ruby)) {}
  operator T&&() { return std::move(value); }  // NOLINT(google-explicit-constructor)
  operator const T&() const { return value; }  // NOLINT(google-explicit-constructor)
  T value;
};

template <class T>
T integerFromRuby(VALUE ruby) {
  if constexpr (std::unsigned_integral<T>) {
    const std::uint64_t number = unsignedFromRuby(ruby);
    if (!std::in_range<T>(number)) throw InvalidArgumentError("an Integer out of range");
    return static_cast<T>(number);
  } else {
    const std::int64_t number = signedFromRuby(ruby);
    if (!std::in_range<T>(number)) throw InvalidArgumentError("an Integer out of range");
    return static_cast<T>(number);
  }
}

template <class T, T (*Convert)(VALUE)>
std::optional<T> optionalFromRuby(VALUE ruby) {
  if (NIL_P(ruby)) return std::nullopt;
  return Convert(ruby);
}

std::vector<std::string> textsFromRuby(VALUE ruby);
[[noreturn]] void refuseArgument(VALUE ruby, VALUE wantedClass);

template <std::integral T>
  requires(!std::same_as<T, bool>)
struct Argument<T> : ConvertedArgument<T, integerFromRuby<T>> {
  using ConvertedArgument<T, integerFromRuby<T>>::ConvertedArgument;
};
template <>
struct Argument<bool> : ConvertedArgument<bool, booleanFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<double> : ConvertedArgument<double, realFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<std::string> : ConvertedArgument<std::string, textFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<const std::string&> : Argument<std::string> {
  using Argument<std::string>::Argument;
};
template <>
struct Argument<std::optional<std::string>>
    : ConvertedArgument<std::optional<std::string>, optionalFromRuby<std::string, textFromRuby>> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<const std::optional<std::string>&> : Argument<std::optional<std::string>> {
  using Argument<std::optional<std::string>>::Argument;
};
template <>
struct Argument<Data> : ConvertedArgument<Data, dataFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<const Data&> : Argument<Data> {
  using Argument<Data>::Argument;
};
template <>
struct Argument<std::optional<Data>>
    : ConvertedArgument<std::optional<Data>, optionalFromRuby<Data, dataFromRuby>> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<std::optional<Value>>
    : ConvertedArgument<std::optional<Value>, optionalValueFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<const Value&> : ConvertedArgument<Value, valueFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<std::vector<std::string>>
    : ConvertedArgument<std::vector<std::string>, textsFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<const std::vector<std::string>&> : Argument<std::vector<std::string>> {
  using Argument<std::vector<std::string>>::Argument;
};

template <>
struct Argument<std::string_view> {
  explicit Argument(VALUE ruby) : text(textFromRuby(ruby)) {}
  operator std::string_view() const { return text; }  // NOLINT(google-explicit-constructor)
  std::string text;
};

/// A zero-terminated text or nil. A text that holds a zero is refused: the rest would be passed
/// over.
template <>
struct Argument<const char*> {
  explicit Argument(VALUE ruby) {
    if (NIL_P(ruby)) return;
    text = textFromRuby(ruby);
    if (text->find('\0') != text->npos) throw InvalidArgumentError("a text that holds a NUL");
  }
  operator const char*() const {  // NOLINT(google-explicit-constructor)
    return text ? text->c_str() : nullptr;
  }
  std::optional<std::string> text;
};

/// An object of class `T` or a class below it; nil is nullptr.
template <class T>
std::shared_ptr<T> objectFromRuby(VALUE ruby) {
  if (NIL_P(ruby)) return nullptr;
  const std::shared_ptr<VTObject>* shown = shownObject(ruby);
  std::shared_ptr<T> object = shown ? std::dynamic_pointer_cast<T>(*shown) : nullptr;
  if (!object) refuseArgument(ruby, classShowing(typeid(T)));
  return object;
}

template <std::derived_from<VTObject> T>
struct Argument<std::shared_ptr<T>> : ConvertedArgument<std::shared_ptr<T>, objectFromRuby<T>> {
  using ConvertedArgument<std::shared_ptr<T>, objectFromRuby<T>>::ConvertedArgument;
};

/// An object that may not be nil.
template <std::derived_from<VTObject> T>
struct Argument<const T&> {
  explicit Argument(VALUE ruby) : object(objectFromRuby<T>(ruby)) {
    if (!object) refuseArgument(ruby, classShowing(typeid(T)));
  }
  operator const T&() const { return *object; }  // NOLINT(google-explicit-constructor)
  std::shared_ptr<T> object;
};

/// Whatever it is; nullptr when it is no object of ours.
template <>
struct Argument<const VTObject*> {
  explicit Argument(VALUE ruby) {
    if (const auto* shown = shownObject(ruby)) object = *shown;
  }
  operator const VTObject*() const { return object.get(); }  // NOLINT(google-explicit-constructor)
  std::shared_ptr<VTObject> object;
};

std::shared_ptr<Array> arrayFromRuby(VALUE ruby);
std::shared_ptr<Dictionary> dictionaryFromRuby(VALUE ruby);

template <>
struct Argument<std::shared_ptr<Array>> : ConvertedArgument<std::shared_ptr<Array>, arrayFromRuby> {
  using ConvertedArgument::ConvertedArgument;
};
template <>
struct Argument<const Array*> : Argument<std::shared_ptr<Array>> {
  using Argument<std::shared_ptr<Array>>::Argument;
  operator const Array*() const { return value.get(); }  // NOLINT(google-explicit-constructor)
};
template <>
struct Argument<const Dictionary&> {
  explicit Argument(VALUE ruby);
  operator const Dictionary&() const { return *dictionary; }  // NOLINT(google-explicit-constructor)
  std::shared_ptr<Dictionary> dictionary;
};
/// Nil is refused: no operation takes a dictionary that is not there.
template <>
struct Argument<const std::shared_ptr<Dictionary>&> : Argument<const Dictionary&> {
  using Argument<const Dictionary&>::Argument;
  operator const std::shared_ptr<Dictionary>&() const {  // NOLINT(google-explicit-constructor)
    return dictionary;
  }
};

/// The elements of a Ruby Array, as the array of objects `T` of that length; our own arrays as they
/// are; nil is nullptr.
template <class T>
std::shared_ptr<ObjectArray<T>> objectsFromRuby(VALUE ruby) {
  if (NIL_P(ruby)) return nullptr;
  if (!RB_TYPE_P(ruby, T_ARRAY)) return objectFromRuby<ObjectArray<T>>(ruby);
  auto objects = ObjectArray<T>::make();
  for (long i = 0; i < RARRAY_LEN(ruby); ++i) {
    const VALUE element = rb_ary_entry(ruby, i);
    if constexpr (std::same_as<T, Dictionary>) {
      objects->append(Argument<const Dictionary&>(element).dictionary);
    } else {
      objects->append(Argument<const T&>(element).object);
    }
  }
  return objects;
}

template <class T>
struct Argument<std::shared_ptr<ObjectArray<T>>>
    : ConvertedArgument<std::shared_ptr<ObjectArray<T>>, objectsFromRuby<T>> {
  using ConvertedArgument<std::shared_ptr<ObjectArray<T>>, objectsFromRuby<T>>::ConvertedArgument;
};
template <class T>
struct Argument<const ObjectArray<T>&> {
  explicit Argument(VALUE ruby) : objects(objectsFromRuby<T>(ruby)) {
    if (!objects) refuseArgument(ruby, rb_cArray);
  }
  // NOLINTNEXTLINE(google-explicit-constructor): that is what an argument is for.
  operator const ObjectArray<T>&() const { return *objects; }
  std::shared_ptr<ObjectArray<T>> objects;
};
template <class T>
struct Argument<const std::shared_ptr<T>&> : Argument<std::shared_ptr<T>> {
  using Argument<std::shared_ptr<T>>::Argument;
};

/// A dictionary that the operation changes. A Hash has the changed entries put into it afterwards.
template <>
struct Argument<Dictionary&> : Argument<const Dictionary&> {
  explicit Argument(VALUE ruby) : Argument<const Dictionary&>(ruby), given(ruby) {}
  operator Dictionary&() const { return *dictionary; }  // NOLINT(google-explicit-constructor)
  /// May raise: to be called within protect().
  void writeBack() const;
  VALUE given;
};

}  // namespace vt::ruby
