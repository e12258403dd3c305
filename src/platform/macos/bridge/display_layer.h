#pragma once

#import <AVFoundation/AVFoundation.h>

#include "platform/av_foundation.h"
#include "platform/macos/bridge/objc.h"

namespace vlm::platform::bridge {

// The framework's layer. Every AVSampleBufferDisplayLayer is one.
class DisplayLayer : public AVSampleBufferDisplayLayer {
 public:
  explicit DisplayLayer(Objc<::AVSampleBufferDisplayLayer> layer);
  ~DisplayLayer() override;

  void setVideoGravity(std::string_view gravity) override;
  void setBackgroundColor(CGColor color) override;
  double contentsScale() const override;
  void setContentsScale(double scale) override;
  void setFrame(CGRect frame) override;
  AVQueuedSampleBufferRenderingStatus status() const override;
  bool requiresFlushToResumeDecoding() const override;
  bool isReadyForMoreMediaData() const override;
  void flush() override;
  void flushAndRemoveImage() override;
  void enqueueSampleBuffer(Ref<CMSampleBuffer> sample) override;

  ::AVSampleBufferDisplayLayer* native() const { return layer_.get(); }

 private:
  Objc<::AVSampleBufferDisplayLayer> layer_;
};

}  // namespace vlm::platform::bridge
