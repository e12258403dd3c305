#include "png_writer.h"

#include <png.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "VelmoraMacNative.h"
#include "failure.h"

namespace vlm::tools {
namespace {

// The planes of a '420v' buffer, locked.
class Planes {
 public:
  explicit Planes(void* pixbuf) : pixbuf_(pixbuf) {
    if (!vlm_pixbuf_lock(pixbuf, &luma_, &lumaStride_, &chroma_, &chromaStride_)) {
      throw Failure("the picture can't be read");
    }
  }
  ~Planes() { vlm_pixbuf_unlock(pixbuf_); }
  Planes(const Planes&) = delete;
  Planes& operator=(const Planes&) = delete;

  std::uint8_t luma(int x, int y) const { return luma_[y * std::ptrdiff_t{lumaStride_} + x]; }
  const std::uint8_t* chroma(int x, int y) const {
    return chroma_ + y / 2 * std::ptrdiff_t{chromaStride_} + x / 2 * 2;
  }

 private:
  void* pixbuf_;
  std::uint8_t* luma_ = nullptr;
  std::uint8_t* chroma_ = nullptr;
  std::int32_t lumaStride_ = 0;
  std::int32_t chromaStride_ = 0;
};

std::uint8_t clamped(double value) {
  return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

// ITU-R BT.601, video range. The library's own export leaves the upper end of that range where it
// is, so that white comes out grey: fit for measuring, not for looking at.
void appendPixel(std::vector<std::uint8_t>& rgb, std::uint8_t luma, const std::uint8_t* chroma) {
  const double y = (luma - 16) * 255.0 / 219;
  const double cb = (chroma[0] - 128) * 255.0 / 224;
  const double cr = (chroma[1] - 128) * 255.0 / 224;
  rgb.push_back(clamped(y + 1.402 * cr));
  rgb.push_back(clamped(y - 0.344136 * cb - 0.714136 * cr));
  rgb.push_back(clamped(y + 1.772 * cb));
}

std::vector<std::uint8_t> rgbOf(const Planes& planes, Size size) {
  std::vector<std::uint8_t> rgb;
  rgb.reserve(std::size_t{3} * static_cast<std::size_t>(size.width) *
              static_cast<std::size_t>(size.height));
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) appendPixel(rgb, planes.luma(x, y), planes.chroma(x, y));
  }
  return rgb;
}

}  // namespace

void writePng(void* pixbuf, Size size, const std::string& path) {
  const auto rgb = rgbOf(Planes(pixbuf), size);
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(size.width);
  image.height = static_cast<png_uint_32>(size.height);
  image.format = PNG_FORMAT_RGB;
  if (png_image_write_to_file(&image, path.c_str(), 0, rgb.data(), 0, nullptr) == 0) {
    throw Failure("can't write " + path + ": " + image.message);
  }
}

}  // namespace vlm::tools
