#pragma once

#include <chrono>
#include <condition_variable>

#include "platform/linux/glib/handles.h"
#include "platform/mutex.h"
#include "platform/portable/thread.h"

namespace vlm::platform::glib {

// Cancels whatever still runs on its cancellable when the time is up, so that calls to a service
// that has stopped answering end too.
class Deadline {
 public:
  explicit Deadline(std::chrono::milliseconds limit);
  ~Deadline();
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;

  GCancellable* cancellable() const { return cancellable_.get(); }

 private:
  void watch(std::chrono::steady_clock::time_point end);

  const Object<GCancellable> cancellable_;
  Mutex mutex_;
  std::condition_variable_any changed_;
  bool over_ VLM_GUARDED_BY(mutex_) = false;
  Thread watcher_;
};

}  // namespace vlm::platform::glib
