#pragma once

#include <algorithm>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "Answer.h"
#include "Argument.h"
#include "Library.h"
#include "Outcome.h"
#include "World.h"
#include "Wrapper.h"

namespace vt::ruby {

/// One operation of a class as Ruby sees it. A class keeps a table of these:
///
///     constexpr Message kMessages[] = {
///         message<&VTShelf::title>("title"),
///         message<&VTShelf::freeSpaceForPath>("freeSpaceForPath:countingCaches:"),
///         classMessage<&VTShelf::allShelves>("allShelves"),
///         initialiser<&VTShelf::initWithTitle>("initWithTitle:owner:"),
///     };
struct Message {
  std::string_view keyed;
  bool isClassLevel;
  VALUE (*call)(int count, VALUE* arguments, VALUE self);
};

enum class Trait : unsigned {
  kNone = 0,
  kReleasesLock = 1,  ///< other Ruby threads run meanwhile; never for what may notify observers
  kReadOnly = 2,      ///< containers in the answer are the library's own: they are shown frozen
};

namespace message_detail {

template <class>
struct Signature;
template <class R, class... P>
struct Signature<R (*)(P...)> {
  using Result = R;
  using Parameters = std::tuple<Argument<P>...>;
  static constexpr int kCount = sizeof...(P);
};

/// The same of an operation on an object: a member function, or a function of ours that stands in
/// for one, whose first parameter is the object.
template <class>
struct InstanceSignature;
template <class C, class R, class... P>
struct InstanceSignature<R (C::*)(P...)> : Signature<R (*)(P...)> {
  using Self = C;
};
template <class C, class R, class... P>
struct InstanceSignature<R (C::*)(P...) const> : Signature<R (*)(P...)> {
  using Self = C;
};
template <class C, class R, class... P>
struct InstanceSignature<R (*)(C&, P...)> : Signature<R (*)(P...)> {
  using Self = std::remove_const_t<C>;
};

[[noreturn]] void refuseEmpty(VALUE self);

template <class C>
C& selfOf(VALUE self) {
  const std::shared_ptr<VTObject>* object = shownObject(self);
  if (!object) refuseEmpty(self);
  return static_cast<C&>(**object);  // a wrapper is filled only with objects of its own class
}

template <class Arguments, std::size_t... I>
Arguments readArguments(const VALUE* values, std::index_sequence<I...>) {
  return Arguments{std::tuple_element_t<I, Arguments>(values[I])...};
}

template <class Parameter>
void writeBack(const Parameter& parameter) {
  if constexpr (requires { parameter.writeBack(); }) {
    protect([&] {
      parameter.writeBack();
      return Qnil;
    });
  }
}

/// Calls, and keeps in the outcome what came of it.
template <class Signature, Trait Traits, class Call>
void answer(Outcome& outcome, const VALUE* values, const Call& call) {
  using Arguments = typename Signature::Parameters;
  auto arguments =
      readArguments<Arguments>(values, std::make_index_sequence<std::tuple_size_v<Arguments>>());
  auto run = [&]() -> decltype(auto) {
    const RunningOutcome running(outcome);
    if constexpr (Traits == Trait::kReleasesLock) {
      auto apply = [&] { return std::apply(call, arguments); };
      return callWithoutInterpreterLock(apply);
    } else {
      return std::apply(call, arguments);
    }
  };
  if constexpr (std::is_void_v<typename Signature::Result>) {
    run();
    std::apply([](const auto&... parameters) { (writeBack(parameters), ...); }, arguments);
  } else {
    std::remove_cvref_t<typename Signature::Result> result = run();
    outcome.value = answerToRuby(std::move(result), Traits == Trait::kReadOnly);
  }
}

template <auto Function, Trait Traits>
void answerAsInstance(Outcome& outcome, const VALUE* values, VALUE self) noexcept {
  using Signature = InstanceSignature<decltype(Function)>;
  contain(outcome, [&](Outcome& result) {
    needWorld();
    auto& object = selfOf<typename Signature::Self>(self);
    answer<Signature, Traits>(result, values, [&object](auto&... parameters) -> decltype(auto) {
      return std::invoke(Function, object, parameters...);
    });
  });
}

template <auto Function, Trait Traits>
void answerAsClass(Outcome& outcome, const VALUE* values) noexcept {
  contain(outcome, [&](Outcome& result) {
    needWorld();
    answer<Signature<decltype(Function)>, Traits>(
        result, values,
        [](auto&... parameters) -> decltype(auto) { return Function(parameters...); });
  });
}

template <auto Function>
void initialise(Outcome& outcome, const VALUE* values, VALUE self) noexcept {
  contain(outcome, [&](Outcome& result) {
    needWorld();
    using Arguments = typename Signature<decltype(Function)>::Parameters;
    auto arguments =
        readArguments<Arguments>(values, std::make_index_sequence<std::tuple_size_v<Arguments>>());
    const RunningOutcome running(result);
    const std::shared_ptr<VTObject> object =
        std::apply([](auto&... parameters) { return Function(parameters...); }, arguments);
    result.value = protect([&] { return fill(self, object); });
  });
}

template <auto Function, Trait Traits>
VALUE callInstance(int count, VALUE* arguments, VALUE self) {
  constexpr int kCount = InstanceSignature<decltype(Function)>::kCount;
  rb_check_arity(count, kCount, kCount);
  Outcome outcome;
  if (waitForLibrary(outcome)) answerAsInstance<Function, Traits>(outcome, arguments, self);
  RB_GC_GUARD(self);
  return outcome.finish();
}

template <auto Function, Trait Traits>
VALUE callClass(int count, VALUE* arguments, VALUE) {
  constexpr int kCount = Signature<decltype(Function)>::kCount;
  rb_check_arity(count, kCount, kCount);
  Outcome outcome;
  if (waitForLibrary(outcome)) answerAsClass<Function, Traits>(outcome, arguments);
  return outcome.finish();
}

template <auto Function>
VALUE callInitialiser(int count, VALUE* arguments, VALUE self) {
  constexpr int kCount = Signature<decltype(Function)>::kCount;
  rb_check_arity(count, kCount, kCount);
  Outcome outcome;
  if (waitForLibrary(outcome)) initialise<Function>(outcome, arguments, self);
  RB_GC_GUARD(self);
  return outcome.finish();
}

/// A message without and one with an argument that have the same name in Ruby.
template <auto Without, auto With>
VALUE callEither(int count, VALUE* arguments, VALUE self) {
  rb_check_arity(count, 0, 1);
  return count == 0 ? callInstance<Without, Trait::kNone>(count, arguments, self)
                    : callInstance<With, Trait::kNone>(count, arguments, self);
}

/// Stops the compiler unless `keyed` takes `count` arguments.
consteval std::string_view checked(std::string_view keyed, int count) {
  if (std::ranges::count(keyed, ':') != count) {
    throw "the message takes another number of arguments";
  }
  return keyed;
}

}  // namespace message_detail

/// An operation of objects: a member function, or a function whose first parameter is the object.
template <auto Function, Trait Traits = Trait::kNone>
consteval Message message(std::string_view keyed) {
  using Signature = message_detail::InstanceSignature<decltype(Function)>;
  return {message_detail::checked(keyed, Signature::kCount), false,
          message_detail::callInstance<Function, Traits>};
}

/// An operation of the class: a static member function.
template <auto Function, Trait Traits = Trait::kNone>
consteval Message classMessage(std::string_view keyed) {
  using Signature = message_detail::Signature<decltype(Function)>;
  return {message_detail::checked(keyed, Signature::kCount), true,
          message_detail::callClass<Function, Traits>};
}

/// An initialiser, called on what `alloc` gave.
template <auto Function>
consteval Message initialiser(std::string_view keyed) {
  using Signature = message_detail::Signature<decltype(Function)>;
  return {message_detail::checked(keyed, Signature::kCount), false,
          message_detail::callInitialiser<Function>};
}

/// An operation of a module: its first argument is what the message is sent to, unless `keyed` has
/// a colon for it.
template <auto Function>
consteval Message moduleMessage(std::string_view keyed) {
  return {keyed, true, message_detail::callClass<Function, Trait::kNone>};
}

/// The messages `keyed` and `keyed` with a colon. Whoever lists it lists the other one too.
template <auto Without, auto With>
consteval Message eitherMessage(std::string_view keyed) {
  return {keyed, false, message_detail::callEither<Without, With>};
}

/// Defines each message under its name in Ruby: each colon an underscore, the last one dropped; of
/// a message "setTitle:" also as "title=". The Ruby object answers "keyedMessages" and
/// "keyedClassMessages" with their names, from which Ruby code makes the forms with keywords.
void defineMessages(VALUE rubyClass, std::span<const Message> messages);

/// A class of `module`, or of one below `parent`, whose objects are those of the C++ class `T`.
template <class T>
VALUE defineClass(VALUE module, const char* name, VALUE parent, std::span<const Message> messages) {
  const VALUE rubyClass = rb_define_class_under(module, name, parent);
  registerClass(typeid(T), rubyClass);
  defineMessages(rubyClass, messages);
  return rubyClass;
}

}  // namespace vt::ruby
