#pragma once

#include <spa/pod/builder.h>
#include <spa/pod/pod.h>

#include <array>
#include <cstdint>
#include <optional>

#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::pipewire {

using x11::Rectangle;
using x11::Size;

inline constexpr std::size_t kBytesPerPixel = 4;
// Rectangles of damage that a buffer can carry; a compositor with more of them joins some.
inline constexpr std::size_t kMostDamage = 16;

// What the library takes, written down as PipeWire negotiates. The answers lie in memory of this.
class Offer {
 public:
  // Blue first pixels of any size, as often as the compositor has them.
  const spa_pod* format();
  // Shared memory, so that no graphics driver is needed, and where the picture changed.
  std::array<const spa_pod*, 2> buffers();

 private:
  alignas(8) std::array<std::uint8_t, 2048> memory_{};
  spa_pod_builder builder_ = {};
};

// The size of the pictures that were agreed on; nothing when they are not of the kind offered.
std::optional<Size> agreedSize(const spa_pod* format);

}  // namespace vlm::platform::pipewire
