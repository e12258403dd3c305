#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "platform/core_video.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::test {

struct Rgb {
  double red;
  double green;
  double blue;
};

// Top left, top right, bottom left, bottom right: which way up a picture is, and its colours.
inline constexpr std::array<Rgb, 4> kQuadrants{Rgb{220, 30, 40}, Rgb{20, 200, 60}, Rgb{30, 50, 230},
                                               Rgb{240, 240, 235}};

inline std::uint8_t byte(double value) {
  return static_cast<std::uint8_t>(std::lround(value));
}

inline void paintPacked(std::uint8_t* pixel, const Rgb& color) {
  pixel[0] = byte(color.blue);
  pixel[1] = byte(color.green);
  pixel[2] = byte(color.red);
  pixel[3] = 0;  // transparency means nothing in a view
}

// What red and blue add to luma; green adds the rest.
struct Weights {
  double red;
  double blue;
};

inline void paintPlanes(std::uint8_t* luma, std::uint8_t* chroma, const Rgb& color, bool videoRange,
                        const Weights& of) {
  const double green = 1 - of.red - of.blue;
  const double y = (of.red * color.red + green * color.green + of.blue * color.blue) / 255;
  const double range = videoRange ? 224 : 255;
  *luma = byte(videoRange ? 16 + 219 * y : 255 * y);
  chroma[0] = byte(128 + range * (color.blue / 255 - y) / (2 - 2 * of.blue));
  chroma[1] = byte(128 + range * (color.red / 255 - y) / (2 - 2 * of.red));
}

// A picture of four quadrants, each in one colour, coded by the formulas of BT.601 or BT.709.
inline platform::Ref<platform::CVPixelBuffer> makeQuadrants(
    std::size_t width, std::size_t height, platform::OSType format,
    platform::YCbCrMatrix matrix = platform::YCbCrMatrix::bt601) {
  using namespace platform;
  Ref<CVPixelBuffer> picture;
  CVPixelBufferCreate(width, height, format, {}, picture);
  picture->setMatrix(matrix);
  const auto weights =
      matrix == YCbCrMatrix::bt601 ? Weights{0.299, 0.114} : Weights{0.2126, 0.0722};
  const bool packed = format == kCVPixelFormatType_32BGRA;
  const auto rowOf = [&](std::size_t plane, std::size_t row) {
    return packed
               ? CVPixelBufferGetBaseAddress(*picture) + row * CVPixelBufferGetBytesPerRow(*picture)
               : CVPixelBufferGetBaseAddressOfPlane(*picture, plane) +
                     row * CVPixelBufferGetBytesPerRowOfPlane(*picture, plane);
  };
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const Rgb& color = kQuadrants[(y * 2 >= height ? 2 : 0) + (x * 2 >= width ? 1 : 0)];
      if (packed) {
        paintPacked(rowOf(0, y) + x * 4, color);
      } else {
        paintPlanes(rowOf(0, y) + x, rowOf(1, y / 2) + x / 2 * 2, color,
                    format == kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange, weights);
      }
    }
  }
  return picture;
}

}  // namespace vlm::test
