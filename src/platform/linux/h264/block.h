#pragma once

#include <cstddef>

#include "platform/portable/change_map.h"

namespace vlm::platform::h264 {

// The side of a macroblock in pixels.
inline constexpr std::size_t kBlock = ChangeMap::kBlockSize;

}  // namespace vlm::platform::h264
