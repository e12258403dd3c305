#pragma once

#include <cstdint>

#include "platform/core_video.h"

namespace vlm::capture {

// The buffer behind a pixel buffer handle, held for the time of a call; null for a null handle.
inline platform::Ref<platform::CVPixelBuffer> borrowPixelBuffer(void* handle) {
  return platform::Ref<platform::CVPixelBuffer>::retaining(
      static_cast<platform::CVPixelBuffer*>(handle));
}

struct LockedPlanes {
  std::uint8_t* lumaBase = nullptr;
  std::int32_t lumaStride = 0;
  std::uint8_t* chromaBase = nullptr;
  std::int32_t chromaStride = 0;
};

// Locks a bi-planar buffer for reading and writes its planes. False, without a lock, for any other
// buffer and when the platform refuses.
bool lockPlanes(platform::CVPixelBuffer& buffer, LockedPlanes& planes);

// Writes the whole picture as packed BGRA into `destination`, which holds `capacity` bytes. False
// when it does not fit (nothing is written), has no layout known here, or the platform refuses.
bool exportBgra(platform::CVPixelBuffer& buffer, std::uint8_t* destination, std::int32_t capacity);

}  // namespace vlm::capture
