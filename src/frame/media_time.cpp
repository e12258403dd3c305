#include "frame/media_time.h"

#include <cmath>
#include <limits>

namespace vlm::frame {

std::int64_t nanoseconds(platform::CMTime time) {
  const double value = platform::CMTimeGetSeconds(time) * 1e9;
  if (std::isnan(value)) return 0;
  // The limits are not representable as doubles: 2^63 is the first value that does not fit.
  constexpr double kTooLarge = 9223372036854775808.0;
  if (value >= kTooLarge) return std::numeric_limits<std::int64_t>::max();
  if (value <= -kTooLarge) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

}  // namespace vlm::frame
