#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/core_video.h"

namespace vlm::test {

struct Rgb {
  double red;
  double green;
  double blue;
};

// Top left, top right, bottom left, bottom right: which way up a picture stands, and its colours.
inline constexpr std::array<Rgb, 4> kQuadrants{Rgb{220, 30, 40}, Rgb{20, 200, 60}, Rgb{30, 50, 230},
                                               Rgb{240, 240, 235}};

// A picture of four quadrants, each in one colour, coded by the formulas of BT.601.
platform::Ref<platform::CVPixelBuffer> makeQuadrants(std::size_t width, std::size_t height,
                                                     platform::OSType format);

}  // namespace vlm::test
