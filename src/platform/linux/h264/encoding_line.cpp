// Compression sessions: frames wait in line for the session's codec thread.
#include <deque>
#include <exception>
#include <memory>
#include <utility>

#include "platform/dispatch.h"
#include "platform/linux/h264/frame_encoder.h"
#include "platform/mutex.h"
#include "platform/portable/object.h"
#include "platform/video_toolbox.h"

namespace vlm::platform {
namespace {

// Of H.264 itself at its highest level.
constexpr std::int32_t kLargestSide = 16384;
// Frames that may wait while one is encoded. More would only add delay.
constexpr std::size_t kMostImages = 3;

// What the session and its codec thread share. Lives until both are done with it.
class Line {
 public:
  Line(std::size_t width, std::size_t height, bool lowLatency)
      : encoder_(width, height, lowLatency) {}

  OSStatus setProperty(std::string_view key, const CFValue& value) {
    MutexLock lock(mutex_);
    return applyProperty(settings_, key, value);
  }

  // A place in line stays for a frame that is dropped, so that its handler runs in turn; its
  // image goes at once. The oldest goes, since only the newest is sure to be what the screen shows
  // when it falls still.
  void submit(FrameEncoder::Frame frame, VTCompressionOutputHandler handler) {
    MutexLock lock(mutex_);
    waiting_.push_back({std::move(frame), std::move(handler)});
    if (++images_ <= kMostImages) return;
    auto oldest = waiting_.begin();
    while (!oldest->frame.image) ++oldest;
    oldest->frame.image = nullptr;
    --images_;
    auto next = oldest + 1;
    if (oldest->frame.forceKeyFrame) next->frame.forceKeyFrame = true;
  }

  void prepare() { encoder_.prepare(settings()); }
  // On the codec thread, once for every frame that was submitted.
  void encodeNext();
  // Frames that still wait are dropped.
  void end() {
    MutexLock lock(mutex_);
    images_ = 0;
    for (auto& place : waiting_) place.frame.image = nullptr;
  }

 private:
  struct Place {
    FrameEncoder::Frame frame;
    VTCompressionOutputHandler handler;
  };

  Place next() {
    MutexLock lock(mutex_);
    Place place = std::move(waiting_.front());
    waiting_.pop_front();
    if (place.frame.image) --images_;
    return place;
  }
  CompressionSettings settings() {
    MutexLock lock(mutex_);
    return settings_;
  }

  FrameEncoder encoder_;  // the codec thread's alone

  Mutex mutex_;
  CompressionSettings settings_ VLM_GUARDED_BY(mutex_);
  std::deque<Place> waiting_ VLM_GUARDED_BY(mutex_);
  std::size_t images_ VLM_GUARDED_BY(mutex_) = 0;
};

void Line::encodeNext() {
  auto place = next();
  if (!place.frame.image) {
    place.handler(noErr, kVTEncodeInfo_FrameDropped, nullptr);
    return;
  }
  Ref<CMSampleBuffer> sample;
  const OSStatus status = encoder_.encode(place.frame, settings(), sample);
  // Whoever made the image may want it back while the handler is still busy with the sample.
  place.frame.image = nullptr;
  place.handler(status, 0, std::move(sample));
}

}  // namespace

class VTCompressionSession final : public Object {
 public:
  VTCompressionSession(std::size_t frameWidth, std::size_t frameHeight, bool lowLatency)
      : width(frameWidth),
        height(frameHeight),
        line(std::make_shared<Line>(frameWidth, frameHeight, lowLatency)),
        queue(dispatch_queue_create("vlm.encoder", DispatchQoS::userInteractive)) {}

  // The frames' size.
  const std::size_t width;
  const std::size_t height;
  const std::shared_ptr<Line> line;
  std::shared_ptr<DispatchQueue> queue;  // null when the session has ended
};

OSStatus VTCompressionSessionCreate(std::int32_t width, std::int32_t height, CMVideoCodecType codec,
                                    const CFValue& encoderSpecification,
                                    Ref<VTCompressionSession>& out) {
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide ||
      codec != kCMVideoCodecType_H264) {
    return kVTParameterErr;
  }
  const auto* lowLatency =
      encoderSpecification.find(kVTVideoEncoderSpecification_EnableLowLatencyRateControl);
  if (lowLatency != nullptr && lowLatency->as<bool>() == nullptr) return kVTParameterErr;
  try {
    out = makeRef<VTCompressionSession>(static_cast<std::size_t>(width),
                                        static_cast<std::size_t>(height),
                                        lowLatency != nullptr && *lowLatency->as<bool>());
  } catch (const std::exception&) {  // no memory, or no thread
    return kVTAllocationFailedErr;
  }
  return noErr;
}

OSStatus VTSessionSetProperty(VTCompressionSession& session, std::string_view key,
                              const CFValue& value) {
  return session.queue ? session.line->setProperty(key, value) : kVTInvalidSessionErr;
}

OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSession& session) {
  if (!session.queue) return kVTInvalidSessionErr;
  session.queue->async([line = session.line] { line->prepare(); });
  return noErr;
}

OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(VTCompressionSession& session,
                                                          Ref<CVPixelBuffer> image,
                                                          CMTime presentationTimeStamp, CMTime,
                                                          const CFValue& frameProperties,
                                                          VTCompressionOutputHandler handler) {
  if (!session.queue) return kVTInvalidSessionErr;
  if (!image || image->width() != session.width || image->height() != session.height ||
      !EncoderInput::accepts(image->format())) {
    return kVTParameterErr;
  }
  const auto* force = frameProperties.find(kVTEncodeFrameOptionKey_ForceKeyFrame);
  const bool forced = force != nullptr && force->as<bool>() != nullptr && *force->as<bool>();
  session.line->submit({std::move(image), presentationTimeStamp, forced}, std::move(handler));
  session.queue->async([line = session.line] { line->encodeNext(); });
  return noErr;
}

OSStatus VTCompressionSessionCompleteFrames(VTCompressionSession& session, CMTime) {
  if (!session.queue) return kVTInvalidSessionErr;
  session.queue->sync([] {});
  return noErr;
}

void VTCompressionSessionInvalidate(VTCompressionSession& session) {
  if (!session.queue) return;
  session.line->end();
  session.queue = nullptr;
}

}  // namespace vlm::platform
