#include "present/presenter.h"

#include <utility>

#include "VelmoraMacNative.h"
#include "frame/guard.h"
#include "frame/log.h"
#include "frame/main_thread.h"
#include "platform/dispatch.h"
#include "platform/foundation.h"

namespace vlm::present {
namespace {

using platform::AVQueuedSampleBufferRenderingStatus;
using platform::CMSampleBuffer;
using platform::CVPixelBuffer;
using platform::noErr;
using platform::Ref;

// Hand-overs in a row that may find the layer failed before it is given up.
constexpr std::int64_t kToleratedFailures = 60;

bool hasFailed(const platform::AVSampleBufferDisplayLayer& layer) {
  return layer.status() == AVQueuedSampleBufferRenderingStatus::failed;
}

// The picture as a sample without any time; null when the platform can't wrap it.
Ref<CMSampleBuffer> wrap(Ref<CVPixelBuffer> image) {
  Ref<platform::CMFormatDescription> description;
  if (platform::CMVideoFormatDescriptionCreateForImageBuffer(*image, description) != noErr ||
      !description) {
    return nullptr;
  }
  Ref<CMSampleBuffer> sample;
  if (platform::CMSampleBufferCreateReadyWithImageBuffer(std::move(image), std::move(description),
                                                         platform::CMSampleTimingInfo{},
                                                         sample) != noErr) {
    return nullptr;
  }
  return sample;
}

}  // namespace

std::shared_ptr<VlmPresenter> VlmPresenter::create() {
  std::shared_ptr<VlmPresentView> view;
  if (platform::NSThread::isMainThread()) {
    view = VlmPresentView::make();
  } else {
    platform::dispatch_get_main_queue()->sync(
        [&] { frame::guarded([&] { view = VlmPresentView::make(); }); });
  }
  return view ? std::make_shared<VlmPresenter>(std::move(view)) : nullptr;
}

std::int32_t VlmPresenter::enqueue(Ref<CVPixelBuffer> image, std::int64_t) {
  const platform::MutexLock lock(gate_);
  const auto layer = view_->displayLayer();
  if (layer->requiresFlushToResumeDecoding()) {
    layer->flush();
    return VLM_PRESENT_BUSY;
  }
  if (hasFailed(*layer)) return recoverFailedLayer(*layer);
  failedSinceFlush_ = 0;
  if (!layer->isReadyForMoreMediaData()) return VLM_PRESENT_BUSY;
  return show(*layer, std::move(image));
}

std::int32_t VlmPresenter::recoverFailedLayer(Layer& layer) {
  layer.flush();
  ++failedSinceFlush_;
  if (failedSinceFlush_ > kToleratedFailures && !rebuildInFlight_) {
    rebuildInFlight_ = true;
    platform::dispatch_get_main_queue()->async([weak = weak_from_this()] {
      if (const auto self = weak.lock()) self->rebuild();
    });
  }
  return VLM_PRESENT_BUSY;
}

std::int32_t VlmPresenter::show(Layer& layer, Ref<CVPixelBuffer> image) {
  auto sample = wrap(std::move(image));
  if (!sample) return VLM_PRESENT_FAIL;
  // A sample that can't carry it has no time either, and is shown all the same.
  platform::helpers::setSampleAttachment(*sample,
                                         platform::kCMSampleAttachmentKey_DisplayImmediately, true);
  layer.enqueueSampleBuffer(std::move(sample));
  return hasFailed(layer) ? VLM_PRESENT_BUSY : VLM_PRESENT_OK;
}

void VlmPresenter::rebuild() {
  bool rebuilt = false;
  {
    const platform::MutexLock lock(gate_);
    rebuilt = frame::guarded(false, [&] { return view_->rebuildLayer(); });
    failedSinceFlush_ = 0;
    rebuildInFlight_ = false;
  }
  if (rebuilt) frame::log("display layer was unrecoverable — rebuilt it");
}

void VlmPresenter::clear() {
  frame::onMainThread([layer = view_->displayLayer()] { layer->flushAndRemoveImage(); });
}

void VlmPresenter::destroy() {
  frame::onMainThread([view = view_] {
    view->displayLayer()->flushAndRemoveImage();
    view->removeFromSuperview();
  });
}

}  // namespace vlm::present
