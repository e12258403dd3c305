#include "platform/portable/fallible.h"
#include "platform/scripted/machine/refusal.h"

namespace vlm::platform {

using scripted::number;
using scripted::unlessRefused;

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType format,
                             const CFValue& attributes, Ref<CVPixelBuffer>& out) {
  return unlessRefused(
      "CVPixelBufferCreate",
      {number(width), number(height), scripted::fourCharacters(format), attributes},
      [&] { return portable::createPixelBuffer(width, height, format, out); });
}

}  // namespace vlm::platform
