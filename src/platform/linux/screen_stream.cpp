#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/screen/capture_thread.h"
#include "platform/mutex.h"
#include "platform/screen_capture_kit.h"

namespace vlm::platform {
namespace {

// A receiver of pictures and the queue that it wants them on.
struct Output {
  std::weak_ptr<SCStreamOutput> output;
  std::shared_ptr<DispatchQueue> queue;
};

Ref<CMSampleBuffer> sampleOf(Ref<CVPixelBuffer> picture, screen::Clock::time_point time) {
  constexpr std::int32_t kNanoseconds = 1'000'000'000;
  const auto sinceStart = std::chrono::nanoseconds(time.time_since_epoch());
  CMSampleTimingInfo timing;
  timing.presentationTimeStamp = CMTimeMake(sinceStart.count(), kNanoseconds);
  Ref<CMFormatDescription> description;
  Ref<CMSampleBuffer> sample;
  if (CMVideoFormatDescriptionCreateForImageBuffer(*picture, description) != noErr ||
      CMSampleBufferCreateReadyWithImageBuffer(std::move(picture), std::move(description), timing,
                                               sample) != noErr) {
    return nullptr;
  }
  auto* attachments = CMSampleBufferGetSampleAttachmentsArray(*sample, true);
  if (auto* array = attachments ? attachments->as<CFArray>() : nullptr) {
    array->front() = CFDictionary{
        {std::string(SCStreamFrameInfoStatus), static_cast<std::int64_t>(SCFrameStatus::complete)}};
  }
  return sample;
}

class ScreenStream final : public SCStream, public std::enable_shared_from_this<ScreenStream> {
 public:
  ScreenStream(std::shared_ptr<const ContentFilter> filter,
               const SCStreamConfiguration& configuration, std::weak_ptr<SCStreamDelegate> delegate)
      : filter_(std::move(filter)), configuration_(configuration), delegate_(std::move(delegate)) {}

  std::optional<NSError> addStreamOutput(std::weak_ptr<SCStreamOutput> output,
                                         SCStreamOutputType type,
                                         std::shared_ptr<DispatchQueue> queue) override {
    if (type != SCStreamOutputType::screen) {
      return NSError{"system audio is not captured on this platform yet"};
    }
    MutexLock lock(mutex_);
    outputs_.push_back({std::move(output), std::move(queue)});
    return std::nullopt;
  }

  void startCaptureWithCompletionHandler(CompletionHandler handler) override {
    if (auto refusal = refusalOf(configuration_)) {
      handler(std::move(refusal));
      return;
    }
    {
      MutexLock lock(mutex_);
      if (!thread_) {
        thread_ = std::make_unique<screen::CaptureThread>(filter_, configuration_,
                                                          handlers(std::move(handler), outputs_));
        return;
      }
    }
    handler(NSError{"the stream was started before"});
  }

  void stopCaptureWithCompletionHandler(CompletionHandler handler) override {
    std::unique_ptr<screen::CaptureThread> thread;
    {
      MutexLock lock(mutex_);
      thread = std::move(thread_);
    }
    thread = nullptr;
    handler(std::nullopt);
  }

 private:
  static std::optional<NSError> refusalOf(const SCStreamConfiguration& configuration) {
    constexpr std::size_t kLargestSide = 1 << 15;  // what the X protocol can say
    if (configuration.pixelFormat != kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange) {
      return NSError{"only '420v' pictures are made on this platform"};
    }
    if (configuration.width < 1 || configuration.width > kLargestSide || configuration.height < 1 ||
        configuration.height > kLargestSide || configuration.queueDepth < 1) {
      return NSError{"the size of the picture or of the queue is out of range"};
    }
    return std::nullopt;
  }

  screen::CaptureThread::Handlers handlers(CompletionHandler started, std::vector<Output> outputs) {
    const auto self = weak_from_this();
    return {.started = std::move(started),
            .picture =
                [self, outputs = std::move(outputs)](Ref<CVPixelBuffer> picture,
                                                     screen::Clock::time_point time) {
                  if (auto sample = sampleOf(std::move(picture), time)) {
                    for (const auto& output : outputs) submit(self, output, sample);
                  }
                },
            .ended =
                [self, delegate = delegate_](const NSError& error) {
                  const auto stream = self.lock();
                  const auto listener = delegate.lock();
                  if (stream && listener) listener->didStopWithError(*stream, error);
                }};
  }

  static void submit(const std::weak_ptr<ScreenStream>& self, const Output& output,
                     const Ref<CMSampleBuffer>& sample) {
    output.queue->async([self, receiver = output.output, sample] {
      const auto stream = self.lock();
      const auto listener = receiver.lock();
      if (stream && listener) {
        listener->didOutputSampleBuffer(*stream, *sample, SCStreamOutputType::screen);
      }
    });
  }

  const std::shared_ptr<const ContentFilter> filter_;
  const SCStreamConfiguration configuration_;
  const std::weak_ptr<SCStreamDelegate> delegate_;

  Mutex mutex_;
  std::vector<Output> outputs_ VLM_GUARDED_BY(mutex_);
  std::unique_ptr<screen::CaptureThread> thread_ VLM_GUARDED_BY(mutex_);
};

}  // namespace

std::shared_ptr<SCStream> SCStream::initWithFilter(std::shared_ptr<const SCContentFilter> filter,
                                                   const SCStreamConfiguration& configuration,
                                                   std::weak_ptr<SCStreamDelegate> delegate) {
  // Every filter of this platform is of its own making.
  return std::make_shared<ScreenStream>(std::static_pointer_cast<const ContentFilter>(filter),
                                        configuration, std::move(delegate));
}

}  // namespace vlm::platform
