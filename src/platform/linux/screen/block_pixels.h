#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/linux/x11/rectangle.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::platform::screen {

// A part of a bi-planar picture: the address of its first luma and chroma byte.
struct PlanarView {
  std::uint8_t* luma = nullptr;
  std::size_t lumaBytesPerRow = 0;
  std::uint8_t* chroma = nullptr;
  std::size_t chromaBytesPerRow = 0;

  static PlanarView of(const CVPixelBuffer& buffer) {
    const auto& luma = buffer.plane(0);
    const auto& chroma = buffer.plane(1);
    return {luma.base, luma.bytesPerRow, chroma.base, chroma.bytesPerRow};
  }
  // The view from a pixel on; both coordinates even.
  PlanarView at(int x, int y) const;
};

// Compare and copy the same part of two pictures, which begins at an even pixel.
bool isSame(const PlanarView& a, const PlanarView& b, x11::Size size);
void copyPixels(const PlanarView& from, const PlanarView& to, x11::Size size);

}  // namespace vlm::platform::screen
