#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Conversion.h"
#include "Outcome.h"
#include "foundation/ObjectArray.h"

namespace vt::ruby {

/// What an operation answered as a value; nothing for nil.
template <class T>
std::optional<Value> valueOfAnswer(T answer) {
  if constexpr (std::same_as<T, std::optional<Value>>) {
    return answer;
  } else if constexpr (requires { answer.has_value(); }) {
    if (!answer) return std::nullopt;
    return Value(std::move(*answer));
  } else {
    return Value(std::move(answer));
  }
}

/// Several texts are an Array of Ruby's own: they are of this answer alone.
template <class Texts>
VALUE textsToRuby(const Texts& texts) {
  return protect([&] {
    const VALUE array = rb_ary_new_capa(static_cast<long>(texts.size()));
    for (const std::string& text : texts) rb_ary_push(array, textToRuby(text));
    return array;
  });
}

/// What an operation answered, in Ruby. Throws Stopped when Ruby cannot make it.
template <class T>
VALUE answerToRuby(T&& answer, bool frozen) {
  static_assert(!std::is_reference_v<T>, "an answer is moved from");
  if constexpr (std::same_as<T, bool>) {
    return answer ? Qtrue : Qfalse;
  } else if constexpr (std::signed_integral<T> && sizeof(T) <= sizeof(std::int32_t)) {
    return INT2FIX(answer);
  } else if constexpr (std::same_as<T, std::vector<std::string>> ||
                       std::same_as<T, std::set<std::string>>) {
    return textsToRuby(answer);
  } else {
    const std::optional<Value> value = valueOfAnswer(std::forward<T>(answer));
    if (!value) return Qnil;
    return protect([&] { return valueToRuby(*value, frozen); });
  }
}

}  // namespace vt::ruby
