#pragma once

#include <cstdint>

#include "platform/core_video.h"

namespace vlm::codec {

// A picture in the caller's memory: 4 bytes a pixel in the order blue, green, red, alpha.
struct BgraImage {
  const std::uint8_t* pixels;
  std::int32_t width;
  std::int32_t height;
  std::int32_t stride;  // bytes from one row to the next
};

// A new 'BGRA' pixel buffer with a copy of the image; null when the platform can't make one.
platform::Ref<platform::CVPixelBuffer> copyToPixelBuffer(const BgraImage& image);

}  // namespace vlm::codec
