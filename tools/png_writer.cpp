#include "png_writer.h"

#include <png.h>

#include <cstdint>
#include <vector>

#include "VelmoraMacNative.h"
#include "failure.h"

namespace vlm::tools {

void writePng(void* pixbuf, int width, int height, const std::string& path) {
  std::vector<std::uint8_t> pixels(std::size_t{4} * static_cast<std::size_t>(width) *
                                   static_cast<std::size_t>(height));
  if (!vlm_pixbuf_to_bgra(pixbuf, pixels.data(), static_cast<std::int32_t>(pixels.size()))) {
    throw Failure("the picture could not be read");
  }
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width);
  image.height = static_cast<png_uint_32>(height);
  image.format = PNG_FORMAT_BGRA;
  if (png_image_write_to_file(&image, path.c_str(), 0, pixels.data(), 0, nullptr) == 0) {
    throw Failure("can't write " + path + ": " + image.message);
  }
}

}  // namespace vlm::tools
