#include "platform/linux/h264/encoding_line.h"

#include <utility>

namespace vlm::platform::h264 {
void EncodingLine::encodeNext() {
  auto place = next();
  if (!place.frame.image) {
    place.handler(noErr, kVTEncodeInfo_FrameDropped, nullptr);
    return;
  }
  Ref<CMSampleBuffer> sample;
  const OSStatus status = encoder_.encode(place.frame, settings(), sample);
  // The maker of the image may want it back while the handler is still busy with the sample.
  place.frame.image = nullptr;
  place.handler(status, 0, std::move(sample));
}

}  // namespace vlm::platform::h264
