#pragma once

#include <memory>

#include "platform/av_foundation.h"
#include "platform/linux/view/wake_up.h"
#include "platform/mutex.h"

namespace vlm::platform::view {

// The place where pictures wait for the thread of the view that shows them. It holds at most one
// that is not on the screen yet; a newer one takes the place of an older.
class DisplayLayer final : public AVSampleBufferDisplayLayer {
 public:
  // The view's window is black where no picture is, pictures fill it, and a point is a pixel.
  void setVideoGravity(std::string_view) override {}
  void setBackgroundColor(CGColor) override {}
  void setFrame(CGRect) override {}
  double contentsScale() const override VLM_EXCLUDES(mutex_);
  void setContentsScale(double scale) override VLM_EXCLUDES(mutex_);

  AVQueuedSampleBufferRenderingStatus status() const override VLM_EXCLUDES(mutex_);
  bool requiresFlushToResumeDecoding() const override { return false; }
  bool isReadyForMoreMediaData() const override VLM_EXCLUDES(mutex_);
  void flush() override VLM_EXCLUDES(mutex_);
  void flushAndRemoveImage() override VLM_EXCLUDES(mutex_);
  void enqueueSampleBuffer(Ref<CMSampleBuffer> sample) override VLM_EXCLUDES(mutex_);

  // ---- For the view's thread ----

  // From now on `wakeUp` is signalled whenever there is something to take.
  void attach(std::shared_ptr<const WakeUp> wakeUp) VLM_EXCLUDES(mutex_);

  struct Work {
    bool removeImage = false;  // to be done first
    Ref<CVPixelBuffer> picture;
  };
  // What was handed over since the last time.
  Work take() VLM_EXCLUDES(mutex_);
  // What was taken is on the screen, or will be as soon as the view is.
  void done() VLM_EXCLUDES(mutex_);
  // What was taken can't be shown: the layer has failed until it is flushed.
  void refuse() VLM_EXCLUDES(mutex_);
  // The view has no window that a host could have placed: until it has, nothing is taken.
  void setHasPlace(bool hasPlace) VLM_EXCLUDES(mutex_);

 private:
  void discard() VLM_REQUIRES(mutex_);
  void wake() const VLM_REQUIRES(mutex_);

  mutable Mutex mutex_;
  std::shared_ptr<const WakeUp> wakeUp_ VLM_GUARDED_BY(mutex_);
  Ref<CVPixelBuffer> waiting_ VLM_GUARDED_BY(mutex_);
  bool inWork_ VLM_GUARDED_BY(mutex_) = false;  // taken and not done
  bool removeImage_ VLM_GUARDED_BY(mutex_) = false;
  bool hasPlace_ VLM_GUARDED_BY(mutex_) = true;
  AVQueuedSampleBufferRenderingStatus status_ VLM_GUARDED_BY(mutex_) =
      AVQueuedSampleBufferRenderingStatus::unknown;
  double contentsScale_ VLM_GUARDED_BY(mutex_) = 1;
};

}  // namespace vlm::platform::view
