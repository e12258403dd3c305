#pragma once

#include <cstdint>

#include "platform/core_media.h"

namespace vlm::frame {

inline constexpr std::int32_t kNanosecondTimescale = 1'000'000'000;

// A time stamp of the boundary as the platform's media time.
inline platform::CMTime mediaTime(std::int64_t ptsNs) {
  return platform::CMTimeMake(ptsNs, kNanosecondTimescale);
}

// The way back: by seconds as a double, truncated toward zero. 0 for a time that is not one, the
// nearest limit for one that does not fit.
std::int64_t nanoseconds(platform::CMTime time);

}  // namespace vlm::frame
