// Not served yet: no layer can be made.
#include "platform/av_foundation.h"

namespace vlm::platform {

std::shared_ptr<AVSampleBufferDisplayLayer> AVSampleBufferDisplayLayer::make() {
  return nullptr;
}

}  // namespace vlm::platform
