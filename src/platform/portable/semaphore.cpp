#include "platform/portable/semaphore.h"

namespace vlm::platform {

void ThreadSemaphore::wait() {
  MutexLock lock(mutex_);
  while (count_ == 0) signalled_.wait(mutex_);
  --count_;
}

void ThreadSemaphore::signal() {
  MutexLock lock(mutex_);
  ++count_;
  // Under the lock: the waiter may destroy the semaphore as soon as it gets hold of the lock.
  signalled_.notify_one();
}

}  // namespace vlm::platform
