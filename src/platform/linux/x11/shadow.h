#pragma once

#include <cstdint>
#include <span>

#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::x11 {

// How far a window reaches beyond what is seen of it: a client that draws its decoration itself
// puts an invisible shadow around it.
struct Shadow {
  int left = 0;
  int right = 0;
  int top = 0;
  int bottom = 0;

  Rectangle within(const Rectangle& whole) const {
    return {whole.x + left, whole.y + top, whole.width - left - right, whole.height - top - bottom};
  }
};

// As the window's property says; none when that leaves nothing of a window of this size.
inline Shadow shadowIn(std::span<const std::uint32_t> property, Size window) {
  if (property.size() != 4 || std::ranges::any_of(property, [](auto n) { return n > 0x7FFF; })) {
    return {};
  }
  const auto side = [&](std::size_t i) { return static_cast<int>(property[i]); };
  const Shadow shadow{side(0), side(1), side(2), side(3)};
  return shadow.within(wholeOf(window)).isEmpty() ? Shadow() : shadow;
}

}  // namespace vlm::platform::x11
