#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/screen/feed.h"
#include "platform/linux/screen/frame_composer.h"
#include "platform/linux/screen/source.h"

namespace vlm::platform::screen {

// Waits for changes and makes pictures of them, no more often than wanted. Sleeps while nothing
// changes.
class CaptureLoop {
 public:
  using Deliver = std::function<void(Ref<CVPixelBuffer>, Clock::time_point)>;

  CaptureLoop(Feed& feed, Source& source, FrameComposer& composer, Clock::duration interval,
              Deliver deliver);

  // Runs until the feed is lost (or hung up) or the source ends, and returns why.
  std::string run();

 private:
  using Wake = std::optional<Clock::time_point>;

  // Does what is due now; returns when to look again even if nothing comes.
  Wake step(Clock::time_point now);
  void sleep(const Wake& wake) const;

  Feed& feed_;
  Source& source_;
  FrameComposer& composer_;
  const Clock::duration interval_;
  const Deliver deliver_;
  Clock::time_point nextGrab_ = Clock::time_point::min();
};

}  // namespace vlm::platform::screen
