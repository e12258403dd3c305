#include "platform/core_graphics.h"

#include <algorithm>

namespace vlm::platform {

bool CGRectIntersectsRect(const CGRect& a, const CGRect& b) noexcept {
  const double left = std::max(a.origin.x, b.origin.x);
  const double top = std::max(a.origin.y, b.origin.y);
  const double right = std::min(a.origin.x + a.size.width, b.origin.x + b.size.width);
  const double bottom = std::min(a.origin.y + a.size.height, b.origin.y + b.size.height);
  return left < right && top < bottom;
}

}  // namespace vlm::platform
