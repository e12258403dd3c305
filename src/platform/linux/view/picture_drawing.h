#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/core_video.h"
#include "platform/portable/plane.h"

namespace vlm::platform::view {

// Memory for one picture on the screen: 4 bytes a pixel in the order blue, green, red and one that
// is not looked at.
struct PixelTarget : Plane {
  int width = 0;
  int height = 0;

  // Without bytes between the rows, as the server takes them.
  static PixelTarget over(std::uint8_t* pixels, int width, int height) {
    return {{pixels, static_cast<std::size_t>(width) * 4}, width, height};
  }
};

// True for the formats that PictureDrawing knows.
bool canDraw(const CVPixelBuffer& picture) noexcept;

// Draws pictures stretched over the whole of a target, smoothly where the sizes differ.
class PictureDrawing {
 public:
  // False when the picture's pixels can't be had.
  bool draw(CVPixelBuffer& picture, const PixelTarget& target);

 private:
  // What lies between two steps, kept from picture to picture.
  std::vector<std::uint8_t> between_;
};

}  // namespace vlm::platform::view
