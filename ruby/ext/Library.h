#pragma once

#include <exception>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>

#include "Outcome.h"

namespace vt::ruby {

// The library may not be entered twice at once. While a call keeps Ruby's interpreter lock, no
// other thread can come in. Two things give that lock up in the middle of a call, a search and a
// block that is told of a change: meanwhile the call holds the library, and other threads wait for
// it. The thread that holds it may call in again.

/// Waits until no other thread holds the library. False when the wait was interrupted; the outcome
/// then knows by what, and the call is not to be begun.
bool waitForLibrary(Outcome& outcome) noexcept;

/// Holds the library against other threads while it lives. No other thread may hold it.
class LibraryHold {
 public:
  LibraryHold();
  LibraryHold(const LibraryHold&) = delete;
  LibraryHold& operator=(const LibraryHold&) = delete;
  ~LibraryHold();

 private:
  bool isOutermost_;
};

/// Whether other threads may call into the library while one of them is without the interpreter
/// lock.
enum class LibraryMeanwhile : bool { kIsHeld, kIsFree };

/// Runs `work`, which touches nothing of Ruby's, while other Ruby threads go on. Where the library
/// is free meanwhile, neither `work` nor the rest of the call touches anything of it that others
/// could. It is not begun when somebody interrupts the thread: that is raised as Stopped. Once
/// begun it ends, and the interruption comes after the call.
void withoutInterpreterLock(LibraryMeanwhile library, void (*work)(void* argument), void* argument);

/// What `call` answers, run by withoutInterpreterLock(); throws what it throws.
template <LibraryMeanwhile library = LibraryMeanwhile::kIsHeld, class Call>
auto callWithoutInterpreterLock(Call& call) {
  using Answer = std::invoke_result_t<Call&>;
  struct Job {
    Call* call;
    std::conditional_t<std::is_void_v<Answer>, std::monostate, Answer> answer;
    std::exception_ptr error;
  } job{&call, {}, nullptr};
  withoutInterpreterLock(
      library,
      [](void* pointer) {
        Job& running = *static_cast<Job*>(pointer);
        try {
          if constexpr (std::is_void_v<Answer>) {
            (*running.call)();
          } else {
            running.answer = (*running.call)();
          }
        } catch (...) {
          running.error = std::current_exception();
        }
      },
      &job);
  if (job.error) std::rethrow_exception(job.error);
  if constexpr (!std::is_void_v<Answer>) return std::move(job.answer);
}

/// Lets go of `object` now, or, while the library is held, as soon as it is free: the end of an
/// object may be a call into the library.
void letGo(std::shared_ptr<void> object) noexcept;

/// Where the observers of the call that runs leave what their blocks raise; nullptr outside of one.
Outcome*& runningOutcome();

/// Makes `outcome` the running one while it lives.
class RunningOutcome {
 public:
  explicit RunningOutcome(Outcome& outcome)
      : previous_(std::exchange(runningOutcome(), &outcome)) {}
  RunningOutcome(const RunningOutcome&) = delete;
  RunningOutcome& operator=(const RunningOutcome&) = delete;
  ~RunningOutcome() { runningOutcome() = previous_; }

 private:
  Outcome* previous_;
};

void prepareLibraryLock();

}  // namespace vt::ruby
