#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/core_video.h"

namespace vlm::platform::view {

// Memory for one picture on the screen: 4 bytes a pixel in the order blue, green, red and one that
// is not looked at.
struct PixelTarget {
  std::uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  int bytesPerRow() const noexcept { return width * 4; }
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
