// Pixel buffers need nothing of the system: no operation is ever refused before it is tried.
#include "platform/portable/fallible.h"

namespace vlm::platform {

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType format, const CFValue&,
                             Ref<CVPixelBuffer>& out) {
  return portable::createPixelBuffer(width, height, format, out);
}

}  // namespace vlm::platform
