// Used where there is no vector library: the caller's own loop takes every pixel.
#include "platform/portable/ycbcr_rows.h"

namespace vlm::platform::portable {

void finishStreaming() {}

std::size_t convertRowToBgra(const YCbCrRow&, std::size_t, const YCbCrFactors&, StoreKind) {
  return 0;
}

}  // namespace vlm::platform::portable
