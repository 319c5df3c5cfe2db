#pragma once

#include <type_traits>
#include <utility>

#include "Ruby.h"

namespace vt::ruby {

/// What a call leaves for Ruby once no C++ object of it is alive any more.
///
/// Raising in Ruby jumps over C++ destructors. So nothing is raised while a call runs: what is to
/// be raised is noted here, and finish() raises it from a frame that holds nothing to destroy.
struct Outcome {
  VALUE value = Qnil;
  VALUE error = Qnil;  ///< the exception to raise, or nil
  int jump = 0;        ///< how a block left when it did so without an exception: a throw, a kill

  /// The value; or raises, or goes on with the jump.
  VALUE finish() const;
  /// Whether the call is to end by raising or jumping.
  bool hasFailed() const { return jump != 0 || error != Qnil; }
  /// Keeps what rb_protect() stopped with `state`. A jump outranks an exception, and of two
  /// exceptions the first stays.
  void keepStopped(int state) noexcept;
  /// Keeps the C++ exception that is being handled, as its Ruby counterpart.
  void keepCurrentException() noexcept;
};
static_assert(std::is_trivially_destructible_v<Outcome>);

/// Thrown when Ruby raised inside of protect(); the outcome knows what.
struct Stopped {
  int state;
};

/// Runs `body`, which may raise in Ruby and so must hold nothing to destroy, and gives its VALUE.
/// Throws Stopped when it raised.
template <class Body>
VALUE protect(Body&& body) {
  int state = 0;
  const VALUE value = rb_protect(
      [](VALUE argument) -> VALUE {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): Ruby hands on an integer only.
        return (*reinterpret_cast<std::remove_reference_t<Body>*>(argument))();
      },
      reinterpret_cast<VALUE>(&body), &state);
  if (state != 0) throw Stopped{state};
  return value;
}

/// Runs `body`, which may throw and hold what it likes; whatever it ends with is in the outcome,
/// which it is given, and none of its objects is alive any more.
template <class Body>
void contain(Outcome& outcome, const Body& body) noexcept {
  try {
    body(outcome);
  } catch (const Stopped& stopped) {
    outcome.keepStopped(stopped.state);
  } catch (...) {
    outcome.keepCurrentException();
  }
}

/// Makes the classes of exceptions that have no counterpart in Ruby, below `module`.
void defineErrors(VALUE module);

}  // namespace vt::ruby
