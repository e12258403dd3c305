#include "platform/linux/glib/deadline.h"

#include "platform/portable/thread_names.h"

namespace vlm::platform::glib {

Deadline::Deadline(std::chrono::milliseconds limit) : cancellable_(g_cancellable_new()) {
  watcher_ = Thread(thread_names::kDeadline,
                    [this, end = std::chrono::steady_clock::now() + limit] { watch(end); });
}

Deadline::~Deadline() {
  const MutexLock lock(mutex_);
  over_ = true;
  changed_.notify_one();
}

void Deadline::watch(std::chrono::steady_clock::time_point end) {
  {
    const MutexLock lock(mutex_);
    while (!over_ && changed_.wait_until(mutex_, end) != std::cv_status::timeout) {
    }
    if (over_) return;
  }
  g_cancellable_cancel(cancellable_.get());
}

}  // namespace vlm::platform::glib
