#pragma once

#include <cstdint>
#include <memory>

#include "frame/handle.h"
#include "platform/core_video.h"
#include "platform/mutex.h"
#include "present/view.h"

namespace vlm::present {

// Hands decoded pictures to the display layer of its view, answers back-pressure at once and
// replaces a layer that stays failed.
class VlmPresenter final : public frame::HandleObject<VlmPresenter> {
 public:
  // Null when no view can be made. Off the main thread it waits for the main thread.
  static std::shared_ptr<VlmPresenter> create();

  explicit VlmPresenter(std::shared_ptr<VlmPresentView> view) : view_(std::move(view)) {}

  VlmPresentView& view() const { return *view_; }

  // One of the VLM_PRESENT_ values. Any thread. The picture is shown as soon as possible: it has
  // no use for a time stamp.
  std::int32_t enqueue(platform::Ref<platform::CVPixelBuffer> image, std::int64_t ptsNs)
      VLM_EXCLUDES(gate_);

  // Both act at once on the main thread, and a little later there when called on any other.
  void clear();
  void destroy();

 private:
  using Layer = platform::AVSampleBufferDisplayLayer;

  std::int32_t recoverFailedLayer(Layer& layer) VLM_REQUIRES(gate_);
  static std::int32_t show(Layer& layer, platform::Ref<platform::CVPixelBuffer> image);
  void rebuild() VLM_EXCLUDES(gate_);

  const std::shared_ptr<VlmPresentView> view_;
  // Serialises hand-overs with the replacement of the layer.
  platform::Mutex gate_;
  std::int64_t failedSinceFlush_ VLM_GUARDED_BY(gate_) = 0;
  bool rebuildInFlight_ VLM_GUARDED_BY(gate_) = false;
};

}  // namespace vlm::present
