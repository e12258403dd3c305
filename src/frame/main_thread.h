#pragma once

#include <functional>
#include <utility>

#include "frame/guard.h"
#include "platform/dispatch.h"
#include "platform/foundation.h"

namespace vlm::frame {

// Runs `job` at once on the main thread, and a little later there when called on any other.
inline void onMainThread(std::function<void()> job) {
  if (platform::NSThread::isMainThread()) {
    job();
  } else {
    platform::dispatch_get_main_queue()->async([job = std::move(job)] { guarded(job); });
  }
}

}  // namespace vlm::frame
