#pragma once

#include <cstdint>
#include <memory>

#include "VelmoraMacNative.h"
#include "codec/bitstream.h"
#include "codec/delivery_order.h"
#include "frame/handle.h"
#include "platform/video_toolbox.h"

namespace vlm::codec {

// One H.264 decoder over a decompression session of the platform, rebuilt when the stream's
// parameter sets change. Used by one thread at a time. Pictures arrive on a thread of a session, in
// the order of submission and one at a time, whichever session they come from.
class VlmDecoder final : public frame::HandleObject<VlmDecoder> {
 public:
  // `cb` is never null. Makes no platform call until the first access unit.
  VlmDecoder(bool outputBgra, vlm_frame_cb cb, void* user);

  // Submits one Annex B access unit. False when it was refused.
  bool decode(ByteView accessUnit, std::int64_t ptsNs);

  // Waits until every submitted access unit has been delivered.
  void flush();

  // The same, and ends the session.
  void destroy();

 private:
  bool rebuildSessionIfNeeded();
  platform::OSStatus createSession();
  bool submit(ByteView sample, std::int64_t ptsNs);
  void show(platform::CVPixelBuffer& image, platform::CMTime pts) const;
  void dropSession();

  // Holds the pictures of all sessions, also of those that ended while pictures were in flight.
  const std::shared_ptr<DeliveryOrder> order_ = std::make_shared<DeliveryOrder>();
  // Both present or both absent between calls.
  platform::Ref<platform::VTDecompressionSession> session_;
  platform::Ref<platform::CMFormatDescription> formatDesc_;
  ParameterSets held_;
  const vlm_frame_cb cb_;
  void* const user_;
  const bool outputBgra_;
};

}  // namespace vlm::codec
