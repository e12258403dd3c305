#include "e2e/quadrants.h"

#include <cmath>

namespace vlm::test {
namespace {

using namespace vlm::platform;

std::uint8_t byte(double value) {
  return static_cast<std::uint8_t>(std::lround(value));
}

struct YCbCr {
  std::uint8_t y;
  std::uint8_t cb;
  std::uint8_t cr;
};

YCbCr code(const Rgb& color, bool videoRange) {
  const double y = (0.299 * color.red + 0.587 * color.green + 0.114 * color.blue) / 255;
  const double cb = (color.blue / 255 - y) / 1.772;
  const double cr = (color.red / 255 - y) / 1.402;
  if (videoRange) return {byte(16 + 219 * y), byte(128 + 224 * cb), byte(128 + 224 * cr)};
  return {byte(255 * y), byte(128 + 255 * cb), byte(128 + 255 * cr)};
}

const Rgb& at(std::size_t x, std::size_t y, std::size_t width, std::size_t height) {
  return kQuadrants[(y * 2 >= height ? 2 : 0) + (x * 2 >= width ? 1 : 0)];
}

void paintPacked(CVPixelBuffer& picture, std::size_t width, std::size_t height) {
  for (std::size_t y = 0; y < height; ++y) {
    auto* row = CVPixelBufferGetBaseAddress(picture) + y * CVPixelBufferGetBytesPerRow(picture);
    for (std::size_t x = 0; x < width; ++x, row += 4) {
      const Rgb& color = at(x, y, width, height);
      row[0] = byte(color.blue);
      row[1] = byte(color.green);
      row[2] = byte(color.red);
      row[3] = 0;  // transparency means nothing in a view
    }
  }
}

void paintPlanes(CVPixelBuffer& picture, std::size_t width, std::size_t height, bool videoRange) {
  const auto rowOf = [&](std::size_t plane, std::size_t row) {
    return CVPixelBufferGetBaseAddressOfPlane(picture, plane) +
           row * CVPixelBufferGetBytesPerRowOfPlane(picture, plane);
  };
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const YCbCr coded = code(at(x, y, width, height), videoRange);
      rowOf(0, y)[x] = coded.y;
      rowOf(1, y / 2)[x / 2 * 2] = coded.cb;
      rowOf(1, y / 2)[x / 2 * 2 + 1] = coded.cr;
    }
  }
}

}  // namespace

Ref<CVPixelBuffer> makeQuadrants(std::size_t width, std::size_t height, OSType format) {
  Ref<CVPixelBuffer> picture;
  CVPixelBufferCreate(width, height, format, {}, picture);
  if (format == kCVPixelFormatType_32BGRA) {
    paintPacked(*picture, width, height);
  } else {
    paintPlanes(*picture, width, height, format == kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
  }
  return picture;
}

}  // namespace vlm::test
