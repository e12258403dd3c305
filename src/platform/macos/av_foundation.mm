#include "platform/av_foundation.h"

#import <AVFoundation/AVFoundation.h>
#include <utility>

#include "platform/macos/bridge/display_layer.h"
#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/objc.h"

namespace vlm::platform {

std::shared_ptr<AVSampleBufferDisplayLayer> AVSampleBufferDisplayLayer::make() {
  bridge::Objc<::AVSampleBufferDisplayLayer> layer;
  bridge::guarded([&] {
    layer = bridge::Objc<::AVSampleBufferDisplayLayer>::adopting(
        [[::AVSampleBufferDisplayLayer alloc] init]);
  });
  return layer ? std::make_shared<bridge::DisplayLayer>(std::move(layer)) : nullptr;
}

}  // namespace vlm::platform
