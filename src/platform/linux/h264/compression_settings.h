#pragma once

#include <cstdint>
#include <string_view>

#include "platform/cf_value.h"
#include "platform/foundation.h"

namespace vlm::platform::h264 {

// What the properties of a compression session say. Zero means "no such limit".
struct CompressionSettings {
  double framesPerSecond = 30;
  std::int64_t keyFrameIntervalFrames = 0;
  double keyFrameIntervalSeconds = 0;
  int worstQuantiser = 51;
  double bitsPerSecond = 0;
  // At most so many bytes in any window of so many seconds.
  double limitBytes = 0;
  double limitSeconds = 0;
};

// Applies one property. A value of the wrong type or out of range is refused with kVTParameterErr,
// an unknown key or a choice that is not offered with kVTPropertyNotSupportedErr; the settings then
// stay as they were.
OSStatus applyProperty(CompressionSettings& settings, std::string_view key, const CFValue& value);

}  // namespace vlm::platform::h264
