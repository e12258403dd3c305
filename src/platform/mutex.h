#pragma once

#include <mutex>

// The annotations let clang prove at compile time that guarded members are touched only under
// their lock. The standard mutex carries none, so it is wrapped here once.
#if defined(__clang__)
#define VLM_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define VLM_THREAD_ANNOTATION(x)
#endif

#define VLM_GUARDED_BY(x) VLM_THREAD_ANNOTATION(guarded_by(x))
#define VLM_PT_GUARDED_BY(x) VLM_THREAD_ANNOTATION(pt_guarded_by(x))
#define VLM_REQUIRES(...) VLM_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define VLM_EXCLUDES(...) VLM_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

namespace vlm::platform {

class VLM_THREAD_ANNOTATION(capability("mutex")) Mutex {
 public:
  void lock() VLM_THREAD_ANNOTATION(acquire_capability()) { mutex_.lock(); }
  void unlock() VLM_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }

 private:
  std::mutex mutex_;
};

// Holds a Mutex for a scope. To wait inside it, give the Mutex itself to a
// std::condition_variable_any: it gives the mutex up while it sleeps and has it back when the wait
// returns.
class VLM_THREAD_ANNOTATION(scoped_lockable) MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) VLM_THREAD_ANNOTATION(acquire_capability(mutex))
      : mutex_(mutex) {
    mutex_.lock();
  }
  ~MutexLock() VLM_THREAD_ANNOTATION(release_capability()) { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

}  // namespace vlm::platform
