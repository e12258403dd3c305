#pragma once

#include <condition_variable>

#include "platform/dispatch.h"
#include "platform/mutex.h"

namespace vlm::platform {

class ThreadSemaphore final : public DispatchSemaphore {
 public:
  explicit ThreadSemaphore(int count) : count_(count) {}
  void wait() override;
  void signal() override;

 private:
  Mutex mutex_;
  std::condition_variable_any signalled_;
  int count_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform
