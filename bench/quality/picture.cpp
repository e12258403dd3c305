#include "bench/quality/picture.h"

#include <libyuv.h>

namespace vlm::bench {

void convert(const Canvas& canvas, Picture& picture) {
  const auto width = static_cast<int>(canvas.width);
  libyuv::ARGBToNV12(reinterpret_cast<const std::uint8_t*>(canvas.pixels.data()), width * 4,
                     picture.bytes.data(), width,
                     picture.bytes.data() + canvas.width * canvas.height, width, width,
                     static_cast<int>(canvas.height));
}

}  // namespace vlm::bench
