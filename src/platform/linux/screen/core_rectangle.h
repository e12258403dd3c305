#pragma once

#include "platform/core_graphics.h"
#include "platform/integer.h"
#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::screen {

// A point is a pixel here, and the root window's origin is the origin of global display space.
inline CGRect pointsOf(const x11::Rectangle& r) {
  return {{static_cast<double>(r.x), static_cast<double>(r.y)},
          {static_cast<double>(r.width), static_cast<double>(r.height)}};
}

inline x11::Rectangle pixelsOf(const CGRect& r) {
  return {truncated<int>(r.origin.x), truncated<int>(r.origin.y), truncated<int>(r.size.width),
          truncated<int>(r.size.height)};
}

}  // namespace vlm::platform::screen
