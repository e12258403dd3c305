#include "codec/bgra_input.h"

#include <cstddef>
#include <cstring>
#include <string>

namespace vlm::codec {

platform::Ref<platform::CVPixelBuffer> copyToPixelBuffer(const BgraImage& image) {
  using platform::CFDictionary;
  const platform::CFValue attributes =
      CFDictionary{{std::string(platform::kCVPixelBufferIOSurfacePropertiesKey), CFDictionary{}}};
  platform::Ref<platform::CVPixelBuffer> buffer;
  const auto status = platform::CVPixelBufferCreate(
      static_cast<std::size_t>(image.width), static_cast<std::size_t>(image.height),
      platform::kCVPixelFormatType_32BGRA, attributes, buffer);
  if (status != platform::kCVReturnSuccess || !buffer) return nullptr;
  // The lock of a new buffer, which no other thread has seen, can't be refused.
  platform::CVPixelBufferLockBaseAddress(*buffer, 0);
  auto* base = platform::CVPixelBufferGetBaseAddress(*buffer);
  const auto bytesPerRow = platform::CVPixelBufferGetBytesPerRow(*buffer);
  constexpr std::size_t kBytesPerPixel = 4;
  for (std::int32_t row = 0; row < image.height; ++row) {
    std::memcpy(base + static_cast<std::size_t>(row) * bytesPerRow,
                image.pixels + static_cast<std::ptrdiff_t>(row) * image.stride,
                static_cast<std::size_t>(image.width) * kBytesPerPixel);
  }
  platform::CVPixelBufferUnlockBaseAddress(*buffer, 0);
  return buffer;
}

}  // namespace vlm::codec
