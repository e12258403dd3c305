#pragma once

#include <cstdint>
#include <memory>

#include "VelmoraMacNative.h"
#include "frame/handle.h"
#include "platform/screen_capture_kit.h"

namespace vlm::capture {

// One screen-capture stream: set up from the host's limits, it lends every new picture to the
// host's frame callback.
class VlmCapture final : public frame::HandleObject<VlmCapture>,
                         public platform::SCStreamOutput,
                         public platform::SCStreamDelegate {
 public:
  // `frameCb` is never null; a null `audioCb` means no audio.
  VlmCapture(vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user);

  // Starts the stream and waits until the platform has. False, with nothing kept, when it can't;
  // the reason is logged.
  bool start(std::shared_ptr<const platform::SCContentFilter> filter, std::int32_t fps,
             std::int32_t maxW, std::int32_t maxH, bool wantsAudio);

  // Stops the stream and waits until the platform has, and until the last callback has returned
  // unless this is called from it. Does nothing when none runs.
  void stop();

  // What was captured when the stream started, in points; empty before.
  const platform::CGRect& contentBounds() const { return contentBounds_; }

  // Called on the capture's queue, one at a time.
  void didOutputSampleBuffer(platform::SCStream& stream, platform::CMSampleBuffer& sample,
                             platform::SCStreamOutputType type) override;
  void didStopWithError(platform::SCStream& stream, const platform::NSError& error) override;

 private:
  bool addOutput(platform::SCStream& stream, platform::SCStreamOutputType type);
  void forwardFrame(platform::CMSampleBuffer& sample) const;

  std::shared_ptr<platform::SCStream> stream_;
  const std::shared_ptr<platform::DispatchQueue> queue_;
  platform::CGRect contentBounds_;
  const vlm_frame_cb frameCb_;
  const vlm_audio_cb audioCb_;
  void* const user_;
};

}  // namespace vlm::capture
