#include "Library.h"

#include <optional>
#include <vector>

namespace vt::ruby {
namespace {

// All of this is touched only with the interpreter lock held.
VALUE mutex = Qnil;
VALUE holder = Qnil;  // the thread that holds the library, or nil

std::vector<std::shared_ptr<void>>& waitingToGo() {
  static auto* objects = new std::vector<std::shared_ptr<void>>;  // lives as long as the process
  return *objects;
}

void emptyWaitingToGo() noexcept {
  // Moved out first: an end may lead to another.
  while (!waitingToGo().empty()) {
    const std::vector<std::shared_ptr<void>> going = std::exchange(waitingToGo(), {});
  }
}

/// Takes the outcome of the call that runs aside while others may begin and end.
class OutcomeAside {
 public:
  OutcomeAside() : mine_(std::exchange(runningOutcome(), nullptr)) {}
  OutcomeAside(const OutcomeAside&) = delete;
  OutcomeAside& operator=(const OutcomeAside&) = delete;
  ~OutcomeAside() { runningOutcome() = mine_; }

 private:
  Outcome* mine_;
};

VALUE waitForHolder(VALUE) {
  rb_mutex_lock(mutex);
  holder = Qnil;  // it is already, unless a fork left the thread that held the library behind
  rb_mutex_unlock(mutex);
  return Qnil;
}

}  // namespace

bool waitForLibrary(Outcome& outcome) noexcept {
  while (holder != Qnil && holder != rb_thread_current()) {
    int state = 0;
    rb_protect(waitForHolder, Qnil, &state);
    if (state != 0) {
      outcome.keepStopped(state);
      return false;
    }
  }
  if (holder == Qnil && !waitingToGo().empty()) emptyWaitingToGo();
  return true;
}

LibraryHold::LibraryHold() : isOutermost_(holder == Qnil) {
  if (!isOutermost_) return;
  rb_mutex_trylock(mutex);  // free: whoever held it has set `holder` to nil and let go of both
  holder = rb_thread_current();
}

LibraryHold::~LibraryHold() {
  if (!isOutermost_) return;
  holder = Qnil;
  rb_mutex_unlock(mutex);
}

void withoutInterpreterLock(LibraryMeanwhile library, void (*work)(void* argument),
                            void* argument) {
  struct Job {
    void (*work)(void* argument);
    void* argument;
    bool isDone;
  } job{work, argument, false};
  std::optional<LibraryHold> hold;
  std::optional<OutcomeAside> aside;
  if (library == LibraryMeanwhile::kIsHeld) {
    hold.emplace();
  } else {
    aside.emplace();
  }
  while (!job.isDone) {
    // The flag keeps interruptions from being raised in here, over the heads of C++ objects.
    rb_nogvl(
        [](void* pointer) -> void* {
          Job& running = *static_cast<Job*>(pointer);
          running.work(running.argument);
          running.isDone = true;
          return nullptr;
        },
        &job, nullptr, nullptr, RB_NOGVL_INTR_FAIL);
    if (job.isDone) break;
    protect([] {
      rb_thread_check_ints();
      return Qnil;
    });
  }
}

void letGo(std::shared_ptr<void> object) noexcept {
  if (holder == Qnil) return;
  try {
    waitingToGo().push_back(std::move(object));
  } catch (...) {
    object.reset();  // no memory to put it off
  }
}

Outcome*& runningOutcome() {
  static Outcome* running = nullptr;
  return running;
}

void prepareLibraryLock() {
  rb_gc_register_address(&mutex);
  rb_gc_register_address(&holder);
  mutex = rb_mutex_new();
}

}  // namespace vt::ruby
