#include "platform/linux/glib/deadline.h"

namespace vlm::platform::glib {

Deadline::Deadline(std::chrono::milliseconds limit) : cancellable_(g_cancellable_new()) {
  watcher_ = std::thread([this, end = std::chrono::steady_clock::now() + limit] { watch(end); });
}

Deadline::~Deadline() {
  {
    const MutexLock lock(mutex_);
    over_ = true;
    changed_.notify_one();
  }
  watcher_.join();
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
