#include "platform/macos/bridge/pixel_buffer_keys.h"

#import <CoreVideo/CoreVideo.h>

#include "platform/core_video.h"

namespace vlm::platform::bridge {

Keys pixelBufferKeys() {
  static const Key keys[] = {
      {kCVPixelBufferPixelFormatTypeKey, ::kCVPixelBufferPixelFormatTypeKey},
      {kCVPixelBufferIOSurfacePropertiesKey, ::kCVPixelBufferIOSurfacePropertiesKey},
      {kCVPixelBufferMetalCompatibilityKey, ::kCVPixelBufferMetalCompatibilityKey}};
  return keys;
}

}  // namespace vlm::platform::bridge
