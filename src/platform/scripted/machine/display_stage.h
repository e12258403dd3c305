#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/app_kit.h"
#include "platform/av_foundation.h"
#include "platform/mutex.h"

namespace vlm::platform::scripted {

// A layer whose condition the test decides. What is done to it is in the journal, after the
// number that it got when it was made: "layer1 flush()".
class ScriptedLayer final : public AVSampleBufferDisplayLayer {
 public:
  // All of it is looked at and changed under a lock.
  struct Condition {
    AVQueuedSampleBufferRenderingStatus status = AVQueuedSampleBufferRenderingStatus::unknown;
    bool requiresFlush = false;
    bool ready = true;
    // What handing a sample over makes of the status.
    AVQueuedSampleBufferRenderingStatus afterEnqueue =
        AVQueuedSampleBufferRenderingStatus::rendering;
    double contentsScale = 1;
  };

  explicit ScriptedLayer(int number) : name_("layer" + std::to_string(number)) {}

  void setVideoGravity(std::string_view gravity) override;
  void setBackgroundColor(CGColor color) override;
  double contentsScale() const override { return condition().contentsScale; }
  void setContentsScale(double scale) override VLM_EXCLUDES(mutex_);
  void setFrame(CGRect frame) override;
  AVQueuedSampleBufferRenderingStatus status() const override { return condition().status; }
  bool requiresFlushToResumeDecoding() const override { return condition().requiresFlush; }
  bool isReadyForMoreMediaData() const override { return condition().ready; }
  void flush() override;
  void flushAndRemoveImage() override;
  void enqueueSampleBuffer(Ref<CMSampleBuffer> sample) override VLM_EXCLUDES(mutex_);

  const std::string& name() const { return name_; }
  Condition condition() const VLM_EXCLUDES(mutex_);
  void become(const Condition& condition) VLM_EXCLUDES(mutex_);
  // The sample handed over last; null while there is none.
  Ref<CMSampleBuffer> shown() const VLM_EXCLUDES(mutex_);

 private:
  void note(std::string_view operation, std::initializer_list<CFValue> arguments = {}) const;
  // For what may be done on the main thread alone.
  void noteOnMain(std::string_view operation, std::initializer_list<CFValue> arguments = {}) const;

  const std::string name_;
  mutable Mutex mutex_;
  Condition condition_ VLM_GUARDED_BY(mutex_);
  Ref<CMSampleBuffer> shown_ VLM_GUARDED_BY(mutex_);
};

// Layers, and the window and the screen that views are on.
struct DisplayStage {
  // Layers made so far, in order; changed on the main thread.
  std::vector<std::shared_ptr<ScriptedLayer>> layers;
  std::optional<double> windowScale;
  std::optional<double> mainScreenScale;
  CGRect viewBounds;
};

// The prefix of a journal line for what was done off the main thread and must not be.
std::string_view offMainPrefix();

}  // namespace vlm::platform::scripted
