#pragma once

#include <cstdint>

#include "VelmoraMacNative.h"
#include "frame/handle.h"
#include "platform/video_toolbox.h"

namespace vlm::codec {

// One H.264 encoder over a compression session of the platform, rebuilt when the size of its input
// changes. Used by one thread at a time; output arrives on a thread of the session.
class VlmEncoder final : public frame::HandleObject<VlmEncoder> {
 public:
  struct Settings {
    std::int32_t width;
    std::int32_t height;
    std::int32_t fps;
    std::int32_t bitrateBps;
    bool lowLatency;
  };

  // `cb` is never null. The encoder can be used after the first buildSession() that succeeded.
  VlmEncoder(const Settings& settings, vlm_encoded_cb cb, void* user);

  // Makes and configures a session for the settings. False when the platform has none.
  bool buildSession();

  // Submits a picture, on a new session when its size is another one. True when it was accepted.
  bool encode(platform::Ref<platform::CVPixelBuffer> image, std::int64_t ptsNs, bool forceKeyframe);

  void setBitrate(std::int32_t bitrateBps);

  // Delivers the pictures in flight and ends the session.
  void destroy();

 private:
  bool rebuildFor(std::int32_t width, std::int32_t height);
  void configureSession();
  void applyBitrate();
  void endSession();
  void emit(platform::CMSampleBuffer& sample) const;

  platform::Ref<platform::VTCompressionSession> session_;
  const vlm_encoded_cb cb_;
  void* const user_;
  // The size is that of the last session built or attempted, which is how a failed rebuild is
  // tried again only for yet another size.
  Settings settings_;
};

}  // namespace vlm::codec
