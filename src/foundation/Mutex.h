#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// clang checks at compile time what these say; other compilers skip them.
#if defined(__clang__)
#define VT_THREAD_ANNOTATION(annotation) __attribute__((annotation))
#else
#define VT_THREAD_ANNOTATION(annotation)
#endif
#define VT_GUARDED_BY(mutex) VT_THREAD_ANNOTATION(guarded_by(mutex))
#define VT_REQUIRES(mutex) VT_THREAD_ANNOTATION(requires_capability(mutex))

namespace vt {

/// A mutex that names the fields it guards: mark each with VT_GUARDED_BY, and a function that must
/// be called with the mutex held with VT_REQUIRES.
class VT_THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  void lock() VT_THREAD_ANNOTATION(acquire_capability()) { mutex_.lock(); }
  void unlock() VT_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

/// Holds a mutex while it lives.
class VT_THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) VT_THREAD_ANNOTATION(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.lock();
  }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;
  ~MutexLock() VT_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }

 private:
  Mutex& mutex_;
};

/// Something that threads wait for. A wait can end early: ask again whether it has come.
class Condition {
 public:
  /// The mutex is held on entry and on return, and free in between.
  void wait(Mutex& mutex) VT_REQUIRES(mutex) { condition_.wait(mutex); }
  void waitFor(Mutex& mutex, std::chrono::milliseconds atMost) VT_REQUIRES(mutex) {
    condition_.wait_for(mutex, atMost);
  }
  void notifyOne() { condition_.notify_one(); }
  void notifyAll() { condition_.notify_all(); }

 private:
  std::condition_variable_any condition_;
};

}  // namespace vt
