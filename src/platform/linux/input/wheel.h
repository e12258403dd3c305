#pragma once

#include <cstdint>

namespace vlm::platform::input {

// One axis of a wheel that knows steps only. Pixels add up until they make a step, so that nothing
// of a slow scroll is lost. Turning back starts afresh: what was left over of the other direction
// would swallow the beginning.
class WheelAxis {
 public:
  // About what toolkits scroll for one step.
  static constexpr std::int32_t kPixelsPerStep = 40;
  // No wheel turns further at once; it bounds what one call makes a server do.
  static constexpr std::int32_t kMostSteps = 100;

  // The steps that are due with these pixels; negative the other way.
  std::int32_t turn(std::int32_t pixels) {
    const bool turnsBack = (rest_ < 0 && pixels > 0) || (rest_ > 0 && pixels < 0);
    const std::int64_t all = (turnsBack ? 0 : std::int64_t{rest_}) + pixels;
    rest_ = static_cast<std::int32_t>(all % kPixelsPerStep);
    return static_cast<std::int32_t>(all / kPixelsPerStep);
  }

 private:
  std::int32_t rest_ = 0;
};

}  // namespace vlm::platform::input
