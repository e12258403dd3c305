#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "platform/linux/screen/capture_loop.h"
#include "platform/linux/screen/content_filter.h"
#include "platform/portable/thread.h"
#include "platform/screen_capture_kit.h"

namespace vlm::platform::screen {

// A running capture: a feed of its own and the thread that works on it.
class CaptureThread {
 public:
  // The handlers run on the thread.
  struct Handlers {
    // Once, when the capture runs or can't: then with the reason.
    std::function<void(std::optional<NSError>)> started;
    CaptureLoop::Deliver picture;
    // At most once, when a capture that ran ends by itself.
    std::function<void(const NSError&)> ended;
  };

  CaptureThread(std::shared_ptr<const ContentFilter> filter,
                const SCStreamConfiguration& configuration, Handlers handlers);
  // Ends the capture, whatever the thread waits for, and waits for the thread unless this is the
  // very one.
  ~CaptureThread();
  CaptureThread(const CaptureThread&) = delete;
  CaptureThread& operator=(const CaptureThread&) = delete;

 private:
  class Interruption;
  class Run;

  const std::shared_ptr<Interruption> interruption_;
  Thread thread_;
};

}  // namespace vlm::platform::screen
