#include "frame/media_time.h"

#include "platform/integer.h"

namespace vlm::frame {

std::int64_t nanoseconds(platform::CMTime time) {
  return platform::truncated<std::int64_t>(platform::CMTimeGetSeconds(time) * 1e9);
}

}  // namespace vlm::frame
