#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/screen/frame_composer.h"
#include "platform/linux/screen/source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// Waits for changes and makes pictures of them, no more often than wanted. Sleeps while nothing
// changes.
class CaptureLoop {
 public:
  using Deliver = std::function<void(Ref<CVPixelBuffer>, Clock::time_point)>;

  CaptureLoop(const x11::Connection& connection, Source& source, FrameComposer& composer,
              Clock::duration interval, Deliver deliver);

  // Runs until the server is lost (or the connection hung up) or the source ends, and returns why.
  std::string run();

 private:
  using Wake = std::optional<Clock::time_point>;

  // Does what is due now; returns when to look again even if no event comes.
  Wake step(Clock::time_point now);
  void handleEvents();
  void handleQueuedEvents();  // those that came along with answers
  void sleep(const Wake& wake) const;

  const x11::Connection& connection_;
  Source& source_;
  FrameComposer& composer_;
  const Clock::duration interval_;
  const Deliver deliver_;
  Clock::time_point nextGrab_ = Clock::time_point::min();
};

}  // namespace vlm::platform::screen
