#include "png_writer.h"

#include <libyuv/convert_argb.h>
#include <png.h>

#include <cstdint>
#include <vector>

#include "VelmoraMacNative.h"
#include "failure.h"

namespace vlm::tools {
namespace {

// ITU-R BT.601, video range. The library's own export leaves the upper end of that range where it
// is, so that white comes out grey: fit for measuring, not for looking at.
std::vector<std::uint8_t> rgbOf(void* pixbuf, Size size) {
  std::uint8_t *luma = nullptr, *chroma = nullptr;
  std::int32_t lumaStride = 0, chromaStride = 0;
  const int stride = 3 * size.width;
  std::vector<std::uint8_t> rgb(static_cast<std::size_t>(stride) *
                                static_cast<std::size_t>(size.height));
  if (!vlm_pixbuf_lock(pixbuf, &luma, &lumaStride, &chroma, &chromaStride)) {
    throw Failure("the picture can't be read");
  }
  libyuv::NV12ToRAW(luma, lumaStride, chroma, chromaStride, rgb.data(), stride, size.width,
                    size.height);
  vlm_pixbuf_unlock(pixbuf);
  return rgb;
}

}  // namespace

void writePng(void* pixbuf, Size size, const std::string& path) {
  const auto rgb = rgbOf(pixbuf, size);
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
