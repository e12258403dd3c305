#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/portable/change_map.h"

namespace vlm::platform::h264 {

// The side of a macroblock in pixels.
inline constexpr std::size_t kBlock = ChangeMap::kBlockSize;

// One plane of a picture, or a part of one.
struct Plane {
  const std::uint8_t* pixels;
  std::size_t stride;
};

}  // namespace vlm::platform::h264
