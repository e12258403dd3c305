#include "platform/av_foundation.h"

#include "platform/linux/view/display_layer.h"

namespace vlm::platform {

std::shared_ptr<AVSampleBufferDisplayLayer> AVSampleBufferDisplayLayer::make() {
  return std::make_shared<view::DisplayLayer>();
}

}  // namespace vlm::platform
