#include "capture/stream.h"

#include <optional>
#include <utility>

#include "capture/audio_forwarding.h"
#include "capture/output_size.h"
#include "frame/await.h"
#include "frame/guard.h"
#include "frame/log.h"
#include "frame/media_time.h"

namespace vlm::capture {
namespace {

using platform::NSError;
using platform::SCStream;
using platform::SCStreamConfiguration;
using platform::SCStreamOutputType;

// Nothing when the platform did as it was asked, else why it did not.
using Outcome = std::optional<NSError>;

// How many pictures may be underway or kept by the host before the platform skips one.
constexpr int kQueueDepth = 5;

SCStreamConfiguration configuration(const platform::SCContentFilter& filter, std::int32_t fps,
                                    std::int32_t maxW, std::int32_t maxH, bool wantsAudio) {
  SCStreamConfiguration result;
  result.minimumFrameInterval = platform::CMTimeMake(1, fps <= 1 ? 1 : fps);
  result.pixelFormat = platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
  result.queueDepth = kQueueDepth;
  result.showsCursor = false;
  const OutputSize size =
      outputSize(filter.contentRect().size, filter.pointPixelScale(), maxW, maxH);
  result.width = size.width;
  result.height = size.height;
  if (wantsAudio) {
    result.capturesAudio = true;
    result.excludesCurrentProcessAudio = true;
    result.sampleRate = 48000;
    result.channelCount = 2;
  }
  return result;
}

// Only a status that is present, is a number and is not "complete" says that there is no picture.
bool carriesNewPicture(platform::CMSampleBuffer& sample) {
  const auto status =
      platform::helpers::sampleAttachment(sample, platform::SCStreamFrameInfoStatus);
  const auto* number = status.as<std::int64_t>();
  return number == nullptr ||
         *number == static_cast<std::int64_t>(platform::SCFrameStatus::complete);
}

}  // namespace

VlmCapture::VlmCapture(vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user)
    : queue_(
          platform::dispatch_queue_create("vlm.capture", platform::DispatchQoS::userInteractive)),
      frameCb_(frameCb),
      audioCb_(audioCb),
      user_(user) {}

bool VlmCapture::start(std::shared_ptr<const platform::SCContentFilter> filter, std::int32_t fps,
                       std::int32_t maxW, std::int32_t maxH, bool wantsAudio) {
  contentBounds_ = filter->contentRect();
  auto stream = SCStream::initWithFilter(
      filter, configuration(*filter, fps, maxW, maxH, wantsAudio), weak_from_this());
  if (!addOutput(*stream, SCStreamOutputType::screen)) return false;
  if (wantsAudio && !addOutput(*stream, SCStreamOutputType::audio)) return false;
  const auto error = frame::await<Outcome>([&](SCStream::CompletionHandler handler) {
    stream->startCaptureWithCompletionHandler(std::move(handler));
  });
  if (error) {
    frame::log("startCapture failed: ", error->localizedDescription);
    return false;
  }
  stream_ = std::move(stream);
  return true;
}

bool VlmCapture::addOutput(SCStream& stream, SCStreamOutputType type) {
  const auto error = stream.addStreamOutput(weak_from_this(), type, queue_);
  if (error) frame::log("addStreamOutput failed: ", error->localizedDescription);
  return !error;
}

void VlmCapture::stop() {
  if (stream_) {
    // A stream that can't be stopped any more has stopped already. When the answer comes, no
    // callback of the host runs any more but one that this is called from.
    frame::await<Outcome>([&](SCStream::CompletionHandler handler) {
      stream_->stopCaptureWithCompletionHandler(std::move(handler));
    });
  }
  stream_ = nullptr;
}

void VlmCapture::didOutputSampleBuffer(SCStream&, platform::CMSampleBuffer& sample,
                                       SCStreamOutputType type) {
  if (type == SCStreamOutputType::screen) forwardFrame(sample);
  if (type == SCStreamOutputType::audio && audioCb_ != nullptr) {
    frame::guarded([&] { forwardAudio(sample, audioCb_, user_); });
  }
}

void VlmCapture::forwardFrame(platform::CMSampleBuffer& sample) const {
  if (!platform::CMSampleBufferIsValid(sample)) return;
  auto* image = platform::CMSampleBufferGetImageBuffer(sample);
  if (image == nullptr || !carriesNewPicture(sample)) return;
  const auto pts = platform::CMSampleBufferGetPresentationTimeStamp(sample);
  frameCb_(image, static_cast<std::int32_t>(platform::CVPixelBufferGetWidth(*image)),
           static_cast<std::int32_t>(platform::CVPixelBufferGetHeight(*image)),
           frame::nanoseconds(pts), user_);
}

void VlmCapture::didStopWithError(SCStream&, const NSError& error) {
  frame::log("capture stream stopped with error: ", error.localizedDescription);
}

}  // namespace vlm::capture
