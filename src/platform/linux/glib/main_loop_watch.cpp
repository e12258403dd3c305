#include "platform/linux/glib/main_loop_watch.h"

#include "platform/linux/glib/log_line.h"
#include "platform/portable/thread.h"
#include "platform/portable/thread_names.h"

namespace vlm::platform::glib {

// Never ended: jobs may be posted while the process ends.
MainLoopWatch& MainLoopWatch::shared() {
  static auto* const watch = new MainLoopWatch();
  return *watch;
}

void MainLoopWatch::expect() noexcept {
  const MutexLock lock(mutex_);
  // What still waits since the line was logged is no reason for another one.
  if (waiting_) return;
  waiting_ = true;
  since_ = std::chrono::steady_clock::now();
  if (watched_) return;
  try {
    Thread::startAlone(thread_names::kMainLoopWatch, [this] { watch(); });
    watched_ = true;
  } catch (...) {  // NOLINT(bugprone-empty-catch): no thread to be had: the line is not written
  }
}

void MainLoopWatch::served() {
  const MutexLock lock(mutex_);
  waiting_ = false;
  if (watched_) changed_.notify_all();
}

void MainLoopWatch::watch() {
  {
    const MutexLock lock(mutex_);
    while (waiting_ && std::chrono::steady_clock::now() < since_ + kPatience) {
      changed_.wait_until(mutex_, since_ + kPatience);
    }
    watched_ = false;
    if (!waiting_) return;
  }
  writeLogLine(
      "[vlm] nothing serves the main loop, GLib's default main context: views, trackers and hot "
      "keys wait for it");
}

}  // namespace vlm::platform::glib
