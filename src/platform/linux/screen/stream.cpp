#include "platform/linux/screen/stream.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/linux/pulse/system_audio.h"
#include "platform/linux/screen/capture_thread.h"
#include "platform/mutex.h"
#include "platform/portable/media.h"
#include "platform/running_call.h"

namespace vlm::platform::screen {
namespace {

// A receiver of samples of one type and the queue that it wants them on.
struct Output {
  SCStreamOutputType type;
  std::weak_ptr<SCStreamOutput> output;
  std::shared_ptr<DispatchQueue> queue;
  std::shared_ptr<RunningCall> running;  // of all outputs on the queue
};

// Held by every block of audio that waits in a receiver's queue. A receiver that does not keep up
// loses the blocks beyond a second.
struct QueuedBlock {};
constexpr long kMostWaitingBlocks = 50;

CMTime mediaTime(std::chrono::steady_clock::time_point time) {
  constexpr std::int32_t kNanoseconds = 1'000'000'000;
  return CMTimeMake(std::chrono::nanoseconds(time.time_since_epoch()).count(), kNanoseconds);
}

Ref<CMSampleBuffer> sampleOf(Ref<CVPixelBuffer> picture, Clock::time_point time) {
  CMSampleTimingInfo timing;
  timing.presentationTimeStamp = mediaTime(time);
  Ref<CMFormatDescription> description;
  Ref<CMSampleBuffer> sample;
  if (CMVideoFormatDescriptionCreateForImageBuffer(*picture, description) != noErr ||
      CMSampleBufferCreateReadyWithImageBuffer(std::move(picture), std::move(description), timing,
                                               sample) != noErr) {
    return nullptr;
  }
  helpers::setSampleAttachment(*sample, SCStreamFrameInfoStatus,
                               static_cast<std::int64_t>(SCFrameStatus::complete));
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
    MutexLock lock(mutex_);
    const auto neighbour = std::ranges::find(outputs_, queue, &Output::queue);
    auto running =
        neighbour != outputs_.end() ? neighbour->running : std::make_shared<RunningCall>();
    outputs_.push_back({type, std::move(output), std::move(queue), std::move(running)});
    return std::nullopt;
  }

  void startCaptureWithCompletionHandler(CompletionHandler handler) override {
    if (auto refusal = refusalOf(configuration_)) {
      handler(std::move(refusal));
      return;
    }
    try {
      if (!start(handler)) handler(NSError{"the stream was started before"});
    } catch (const std::exception& failure) {  // no thread or no memory
      handler(NSError{failure.what()});
    }
  }

  void stopCaptureWithCompletionHandler(CompletionHandler handler) override {
    std::unique_ptr<CaptureThread> thread;
    std::vector<Output> outputs;
    {
      MutexLock lock(mutex_);
      thread = std::move(thread_);
      outputs = outputs_;
    }
    thread = nullptr;
    endAudio();
    for (const auto& output : outputs) {
      if (!output.running->isHere()) output.queue->sync([] {});
    }
    handler(std::nullopt);
  }

 private:
  // False when it was started before. The handler is called by the capture's thread.
  bool start(const CompletionHandler& handler) {
    MutexLock lock(mutex_);
    if (thread_) return false;
    thread_ = std::make_unique<CaptureThread>(filter_, configuration_, handlers(handler, outputs_));
    return true;
  }

  // Nothing when there is nothing against it. Once the screen is captured, so that a start that
  // fails leaves no sound behind.
  std::optional<NSError> startAudio() {
    MutexLock lock(mutex_);
    if (!thread_ || !configuration_.capturesAudio.value_or(false)) return std::nullopt;
    try {
      audio_ = makeAudio(outputs_);
    } catch (const std::exception& failure) {  // no thread or no memory
      return NSError{failure.what()};
    }
    return std::nullopt;
  }

  void endAudio() {
    std::unique_ptr<pulse::SystemAudio> audio;  // outlives the lock
    MutexLock lock(mutex_);
    audio = std::move(audio_);
  }

  static std::optional<NSError> refusalOf(const SCStreamConfiguration& configuration) {
    constexpr std::size_t kLargestPicture = 1 << 15;  // what the X protocol can say
    if (configuration.pixelFormat != kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange) {
      return NSError{"only '420v' pictures are made on this platform"};
    }
    if (configuration.width < 1 || configuration.width > kLargestPicture ||
        configuration.height < 1 || configuration.height > kLargestPicture ||
        configuration.queueDepth < 1) {
      return NSError{"the size of the picture or of the queue is out of range"};
    }
    if (configuration.capturesAudio.value_or(false) &&
        (configuration.sampleRate != int{pulse::SystemAudio::kSampleRate} ||
         configuration.channelCount != int{pulse::SystemAudio::kChannels})) {
      return NSError{"audio is captured in stereo at 48 kHz on this platform"};
    }
    return std::nullopt;
  }

  std::unique_ptr<pulse::SystemAudio> makeAudio(std::vector<Output> outputs) {
    const bool excludesOwn = configuration_.excludesCurrentProcessAudio.value_or(false);
    return std::make_unique<pulse::SystemAudio>(
        excludesOwn,
        [self = weak_from_this(), outputs = std::move(outputs),
         backlog = std::make_shared<QueuedBlock>()](std::span<const float> samples,
                                                    std::chrono::steady_clock::time_point time) {
          if (backlog.use_count() > kMostWaitingBlocks) return;
          const auto sample = makeAudioSample(
              samples, {pulse::SystemAudio::kSampleRate, pulse::SystemAudio::kChannels},
              mediaTime(time));
          submit(self, outputs, SCStreamOutputType::audio, sample, backlog);
        });
  }

  CaptureThread::Handlers handlers(CompletionHandler started, std::vector<Output> outputs) {
    const auto self = weak_from_this();
    return {.started =
                [self, started = std::move(started)](std::optional<NSError> error) {
                  const auto stream = self.lock();
                  if (!error && stream) error = stream->startAudio();
                  started(std::move(error));
                },
            .picture =
                [self, outputs = std::move(outputs)](Ref<CVPixelBuffer> picture,
                                                     Clock::time_point time) {
                  if (auto sample = sampleOf(std::move(picture), time)) {
                    submit(self, outputs, SCStreamOutputType::screen, sample);
                  }
                },
            .ended =
                [self, delegate = delegate_](const NSError& error) {
                  const auto stream = self.lock();
                  const auto listener = delegate.lock();
                  if (stream) stream->endAudio();
                  if (stream && listener) listener->didStopWithError(*stream, error);
                }};
  }

  static void submit(const std::weak_ptr<ScreenStream>& self, const std::vector<Output>& outputs,
                     SCStreamOutputType type, const Ref<CMSampleBuffer>& sample,
                     const std::shared_ptr<QueuedBlock>& queuedBlock = nullptr) {
    for (const auto& output : outputs) {
      if (output.type != type) continue;
      output.queue->async(
          [self, receiver = output.output, running = output.running, sample, type, queuedBlock] {
            const RunningCall::Scope scope(*running);
            const auto stream = self.lock();
            const auto listener = receiver.lock();
            if (stream && listener) listener->didOutputSampleBuffer(*stream, *sample, type);
          });
    }
  }

  const std::shared_ptr<const ContentFilter> filter_;
  const SCStreamConfiguration configuration_;
  const std::weak_ptr<SCStreamDelegate> delegate_;

  Mutex mutex_;
  std::vector<Output> outputs_ VLM_GUARDED_BY(mutex_);
  std::unique_ptr<CaptureThread> thread_ VLM_GUARDED_BY(mutex_);
  std::unique_ptr<pulse::SystemAudio> audio_ VLM_GUARDED_BY(mutex_);
};

}  // namespace

std::shared_ptr<SCStream> makeStream(std::shared_ptr<const ContentFilter> filter,
                                     const SCStreamConfiguration& configuration,
                                     std::weak_ptr<SCStreamDelegate> delegate) {
  return std::make_shared<ScreenStream>(std::move(filter), configuration, std::move(delegate));
}

}  // namespace vlm::platform::screen
