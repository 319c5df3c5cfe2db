#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

namespace vt {

template <class Signature>
class FunctionRef;

/// A borrowed callable: two words, no allocation, no copy of what it calls.
///
/// For parameters only: it must not outlive the callable that it was made from.
template <class R, class... Args>
class FunctionRef<R(Args...)> {
 public:
  template <class F>
    requires(!std::same_as<std::remove_cvref_t<F>, FunctionRef> &&
             std::is_invocable_r_v<R, F&, Args...>)
  FunctionRef(F&& callable)  // NOLINT(google-explicit-constructor): a lambda is passed as it stands
      : callable_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),
        call_([](void* target, Args... args) -> R {
          return std::invoke(*static_cast<std::add_pointer_t<F>>(target),
                             std::forward<Args>(args)...);
        }) {}

  R operator()(Args... args) const { return call_(callable_, std::forward<Args>(args)...); }

 private:
  void* callable_;
  R (*call_)(void*, Args...);
};

}  // namespace vt
