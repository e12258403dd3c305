#pragma once

#include <memory>

#include "platform/app_kit.h"
#include "platform/av_foundation.h"
#include "platform/mutex.h"

namespace vlm::present {

// The view that a host places in its window: black, or the last picture stretched to its bounds.
// Made and changed on the main thread. It takes no mouse events.
class VlmPresentView final : public platform::NSView {
 public:
  // Null when the platform can't make a view or a layer.
  static std::shared_ptr<VlmPresentView> make();
  // A view is never read from an archive.
  static std::shared_ptr<VlmPresentView> initWithCoder(platform::NSCoder&) { return nullptr; }

  NSView* hitTest(platform::CGPoint) override { return nullptr; }
  void viewDidMoveToWindow() override;
  void viewDidChangeBackingProperties() override;

  // The layer in use now. Any thread: a hand-over or a removal may ask while the main thread
  // replaces it.
  std::shared_ptr<platform::AVSampleBufferDisplayLayer> displayLayer() const VLM_EXCLUDES(mutex_);
  void setDisplayLayer(std::shared_ptr<platform::AVSampleBufferDisplayLayer> layer)
      VLM_EXCLUDES(mutex_);

  // Puts a fresh layer in the place of one that can't be recovered. False when there is none.
  bool rebuildLayer();

 private:
  VlmPresentView() = default;
  void install(std::shared_ptr<platform::AVSampleBufferDisplayLayer> layer);
  void applyScale();

  mutable platform::Mutex mutex_;
  std::shared_ptr<platform::AVSampleBufferDisplayLayer> displayLayer_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::present
