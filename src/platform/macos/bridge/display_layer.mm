#include "platform/macos/bridge/display_layer.h"

#import <CoreGraphics/CoreGraphics.h>
#import <QuartzCore/QuartzCore.h>
#include <utility>

#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/queue.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform::bridge {

namespace {

static_assert(static_cast<int>(AVQueuedSampleBufferRenderingStatus::unknown) ==
              ::AVQueuedSampleBufferRenderingStatusUnknown);
static_assert(static_cast<int>(AVQueuedSampleBufferRenderingStatus::rendering) ==
              ::AVQueuedSampleBufferRenderingStatusRendering);
static_assert(static_cast<int>(AVQueuedSampleBufferRenderingStatus::failed) ==
              ::AVQueuedSampleBufferRenderingStatusFailed);

}  // namespace

DisplayLayer::DisplayLayer(Objc<::AVSampleBufferDisplayLayer> layer) : layer_(std::move(layer)) {}

// A layer that is on a screen may only end on the main thread.
DisplayLayer::~DisplayLayer() {
  releaseOnMainThread(layer_.release(), [](void* layer) { [static_cast<id>(layer) release]; });
}

void DisplayLayer::setVideoGravity(std::string_view gravity) {
  const Key keys[] = {{platform::AVLayerVideoGravityResize,
                       (CFStringRef)::AVLayerVideoGravityResize}};
  const auto constant = constantFor(keys, gravity);
  if (constant == nullptr) return;
  guarded([&] { [layer_.get() setVideoGravity:(NSString*)constant]; });
}

void DisplayLayer::setBackgroundColor(CGColor color) {
  const Owned<CGColorRef> native(
      ::CGColorCreateSRGB(color.red, color.green, color.blue, color.alpha));
  guarded([&] { [layer_.get() setBackgroundColor:native.get()]; });
}

double DisplayLayer::contentsScale() const {
  double scale = 1;
  guarded([&] { scale = [layer_.get() contentsScale]; });
  return scale;
}

void DisplayLayer::setContentsScale(double scale) {
  guarded([&] { [layer_.get() setContentsScale:scale]; });
}

void DisplayLayer::setFrame(CGRect frame) {
  guarded([&] { [layer_.get() setFrame:toNative(frame)]; });
}

AVQueuedSampleBufferRenderingStatus DisplayLayer::status() const {
  auto status = AVQueuedSampleBufferRenderingStatus::unknown;
  guarded([&] {
    status = static_cast<AVQueuedSampleBufferRenderingStatus>([layer_.get() status]);
  });
  return status;
}

bool DisplayLayer::requiresFlushToResumeDecoding() const {
  bool requires_flush = false;
  guarded([&] { requires_flush = [layer_.get() requiresFlushToResumeDecoding]; });
  return requires_flush;
}

bool DisplayLayer::isReadyForMoreMediaData() const {
  bool ready = false;
  guarded([&] { ready = [layer_.get() isReadyForMoreMediaData]; });
  return ready;
}

void DisplayLayer::flush() {
  guarded([&] { [layer_.get() flush]; });
}

void DisplayLayer::flushAndRemoveImage() {
  guarded([&] { [layer_.get() flushAndRemoveImage]; });
}

void DisplayLayer::enqueueSampleBuffer(Ref<CMSampleBuffer> sample) {
  guarded([&] { [layer_.get() enqueueSampleBuffer:platform::bridge::native(sample)]; });
}

}  // namespace vlm::platform::bridge
