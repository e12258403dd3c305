#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/core_graphics.h"
#include "platform/core_media.h"

namespace vlm::platform {

// The picture is stretched to the layer's bounds; its aspect ratio is not kept.
inline constexpr std::string_view AVLayerVideoGravityResize = "AVLayerVideoGravityResize";

enum class AVQueuedSampleBufferRenderingStatus : std::int64_t {
  unknown = 0,
  rendering = 1,
  failed = 2,
};

struct CGColor {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  friend bool operator==(const CGColor&, const CGColor&) = default;
};
// NSColor's blackColor.
inline constexpr CGColor kBlackColor{};

// Shows sample buffers with a picture in the view that it is the layer of. Configuration is done
// on the main thread; status, readiness, flush and enqueue may be called on any thread.
class AVSampleBufferDisplayLayer {
 public:
  // Null when no layer can be made.
  static std::shared_ptr<AVSampleBufferDisplayLayer> make();
  virtual ~AVSampleBufferDisplayLayer() = default;

  virtual void setVideoGravity(std::string_view gravity) = 0;
  virtual void setBackgroundColor(CGColor color) = 0;
  virtual double contentsScale() const = 0;
  virtual void setContentsScale(double scale) = 0;
  virtual void setFrame(CGRect frame) = 0;

  virtual AVQueuedSampleBufferRenderingStatus status() const = 0;
  virtual bool requiresFlushToResumeDecoding() const = 0;
  // False while the picture handed over last is not on the screen yet, and while the view has lost
  // its place on the screen.
  virtual bool isReadyForMoreMediaData() const = 0;
  // Discards what has not been shown and leaves the failed state where that is possible.
  virtual void flush() = 0;
  // The same, and shows the background instead of the last picture. Main thread.
  virtual void flushAndRemoveImage() = 0;
  // Takes the picture without copying or waiting; a layer that can't show it fails.
  virtual void enqueueSampleBuffer(Ref<CMSampleBuffer> sample) = 0;
};

}  // namespace vlm::platform
