#pragma once

#include <chrono>
#include <condition_variable>

#include "platform/mutex.h"

namespace vlm::platform::glib {

// Logs one line when jobs wait for the main loop and nothing runs it for some seconds: a host whose
// toolkit has a loop of its own would otherwise miss views, trackers and hot keys without a word.
// It has a thread only while something waits.
class MainLoopWatch {
 public:
  static MainLoopWatch& shared();

  // Something waits from now on.
  void expect() noexcept VLM_EXCLUDES(mutex_);
  // The loop runs.
  void served() VLM_EXCLUDES(mutex_);

 private:
  static constexpr std::chrono::seconds kPatience{3};

  void watch() VLM_EXCLUDES(mutex_);

  Mutex mutex_;
  std::condition_variable_any changed_;
  bool waiting_ VLM_GUARDED_BY(mutex_) = false;
  std::chrono::steady_clock::time_point since_ VLM_GUARDED_BY(mutex_);
  bool watched_ VLM_GUARDED_BY(mutex_) = false;  // by the thread
};

}  // namespace vlm::platform::glib
