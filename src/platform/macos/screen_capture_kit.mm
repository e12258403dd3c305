#include "platform/screen_capture_kit.h"

#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <utility>

#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/objc.h"
#include "platform/macos/bridge/queue.h"
#include "platform/macos/bridge/shareable_content.h"
#include "platform/macos/bridge/stream_receivers.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

using bridge::Objc;

namespace {

static_assert(static_cast<int>(SCStreamOutputType::screen) == ::SCStreamOutputTypeScreen);
static_assert(static_cast<int>(SCStreamOutputType::audio) == ::SCStreamOutputTypeAudio);
static_assert(static_cast<int>(SCFrameStatus::complete) == ::SCFrameStatusComplete);
static_assert(static_cast<int>(SCFrameStatus::idle) == ::SCFrameStatusIdle);
static_assert(static_cast<int>(SCFrameStatus::blank) == ::SCFrameStatusBlank);
static_assert(static_cast<int>(SCFrameStatus::suspended) == ::SCFrameStatusSuspended);
static_assert(static_cast<int>(SCFrameStatus::started) == ::SCFrameStatusStarted);
static_assert(static_cast<int>(SCFrameStatus::stopped) == ::SCFrameStatusStopped);

class Filter : public SCContentFilter {
 public:
  explicit Filter(Objc<::SCContentFilter> filter) : filter_(std::move(filter)) {}
  CGRect contentRect() const override { return bridge::fromNative(filter_.get().contentRect); }
  double pointPixelScale() const override { return filter_.get().pointPixelScale; }
  ::SCContentFilter* native() const { return filter_.get(); }

 private:
  const Objc<::SCContentFilter> filter_;
};

// Null when the framework makes no filter or throws.
template <class Make>
std::shared_ptr<const SCContentFilter> makeFilter(Make&& make) {
  Objc<::SCContentFilter> filter;
  bridge::guarded([&] { filter = Objc<::SCContentFilter>::adopting(make()); });
  return filter ? std::make_shared<Filter>(std::move(filter)) : nullptr;
}

Objc<::SCStreamConfiguration> toNative(const SCStreamConfiguration& configuration) {
  auto owner = Objc<::SCStreamConfiguration>::adopting([[::SCStreamConfiguration alloc] init]);
  ::SCStreamConfiguration* const native = owner.get();
  [native setMinimumFrameInterval:bridge::toNative(configuration.minimumFrameInterval)];
  [native setPixelFormat:configuration.pixelFormat];
  [native setQueueDepth:configuration.queueDepth];
  [native setShowsCursor:configuration.showsCursor];
  [native setWidth:configuration.width];
  [native setHeight:configuration.height];
  if (configuration.capturesAudio) [native setCapturesAudio:*configuration.capturesAudio];
  if (configuration.excludesCurrentProcessAudio) {
    [native setExcludesCurrentProcessAudio:*configuration.excludesCurrentProcessAudio];
  }
  if (configuration.sampleRate) [native setSampleRate:*configuration.sampleRate];
  if (configuration.channelCount) [native setChannelCount:*configuration.channelCount];
  return owner;
}

class Stream : public SCStream, public std::enable_shared_from_this<Stream> {
 public:
  Stream(Objc<::SCStream> stream, Objc<VLMStreamDelegate> delegate)
      : stream_(std::move(stream)), delegate_(std::move(delegate)) {}

  std::optional<NSError> addStreamOutput(std::weak_ptr<SCStreamOutput> output,
                                         SCStreamOutputType type,
                                         std::shared_ptr<DispatchQueue> queue) override {
    auto receiver = Objc<VLMStreamOutput>::adopting([[VLMStreamOutput alloc] init]);
    [receiver.get() serve:std::move(output) of:weak_from_this() marking:running_];
    const auto nativeQueue =
        queue == nullptr ? nullptr : static_cast<bridge::Queue&>(*queue).native();
    std::optional<NSError> refusal;
    const auto thrown = bridge::guarded([&] {
      ::NSError* error = nil;
      const bool added = [stream_.get() addStreamOutput:receiver.get()
                                                   type:static_cast<::SCStreamOutputType>(type)
                                     sampleHandlerQueue:nativeQueue
                                                  error:&error];
      if (!added) refusal = bridge::fromError(error).value_or(NSError{"refused"});
    });
    if (thrown) return thrown;
    if (refusal) return refusal;
    outputs_.push_back(std::move(receiver));
    if (queue != nullptr) queues_.push_back(std::move(queue));
    return refusal;
  }

  void startCaptureWithCompletionHandler(CompletionHandler handler) override {
    complete(std::move(handler), [&](void (^done)(::NSError*)) {
      [stream_.get() startCaptureWithCompletionHandler:done];
    });
  }
  // The framework does not say what becomes of samples that its queues still hold. Each queue is run
  // to its end before the handler is called, unless that would wait for the call that stops.
  void stopCaptureWithCompletionHandler(CompletionHandler handler) override {
    const auto queues = running_->isHere() ? decltype(queues_)() : queues_;
    auto closing = [outputs = outputs_, queues, last = std::move(handler)](
                       std::optional<NSError> error) {
      const auto close = [&] {
        for (const auto& output : outputs) [output.get() close];
      };
      for (const auto& queue : queues) queue->sync(close);
      close();
      last(std::move(error));
    };
    complete(std::move(closing), [&](void (^done)(::NSError*)) {
      [stream_.get() stopCaptureWithCompletionHandler:done];
    });
  }

 private:
  // Exactly one answer, also when the call throws.
  template <class Call>
  void complete(CompletionHandler handler, Call&& call) {
    const auto shared = std::make_shared<const CompletionHandler>(std::move(handler));
    const auto block = ^(::NSError* error) {
      @autoreleasepool {
        (*shared)(bridge::fromError(error));
      }
    };
    const auto thrown = bridge::guarded([&] { call(block); });
    if (thrown) (*shared)(thrown);
  }

  const Objc<::SCStream> stream_;
  // The framework keeps neither.
  const Objc<VLMStreamDelegate> delegate_;
  std::vector<Objc<VLMStreamOutput>> outputs_;
  std::vector<std::shared_ptr<DispatchQueue>> queues_;
  const std::shared_ptr<RunningCall> running_ = std::make_shared<RunningCall>();
};

}  // namespace

void SCShareableContent::getShareableContentExcludingDesktopWindows(bool excludingDesktopWindows,
                                                                    bool onScreenWindowsOnly,
                                                                    Handler handler) {
  const auto shared = std::make_shared<const Handler>(std::move(handler));
  const auto block = ^(::SCShareableContent* content, ::NSError* error) {
    @autoreleasepool {
      (*shared)(bridge::fromContent(content), bridge::fromError(error));
    }
  };
  const auto thrown = bridge::guarded([&] {
    [::SCShareableContent getShareableContentExcludingDesktopWindows:excludingDesktopWindows
                                                 onScreenWindowsOnly:onScreenWindowsOnly
                                                   completionHandler:block];
  });
  if (thrown) (*shared)(nullptr, thrown);
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDesktopIndependentWindow(
    std::shared_ptr<const SCWindow> window) {
  return makeFilter([&] {
    return [[::SCContentFilter alloc] initWithDesktopIndependentWindow:bridge::native(*window)];
  });
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayIncludingApplications(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCRunningApplication>> applications,
    std::vector<std::shared_ptr<const SCWindow>> excepting) {
  return makeFilter([&] {
    return [[::SCContentFilter alloc] initWithDisplay:bridge::native(*display)
                                includingApplications:bridge::natives(applications)
                                     exceptingWindows:bridge::natives(excepting)];
  });
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayExcludingWindows(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCWindow>> excluding) {
  return makeFilter([&] {
    return [[::SCContentFilter alloc] initWithDisplay:bridge::native(*display)
                                     excludingWindows:bridge::natives(excluding)];
  });
}

std::shared_ptr<SCStream> SCStream::initWithFilter(std::shared_ptr<const SCContentFilter> filter,
                                                   const SCStreamConfiguration& configuration,
                                                   std::weak_ptr<SCStreamDelegate> delegate) {
  if (filter == nullptr) return nullptr;
  auto receiver = Objc<VLMStreamDelegate>::adopting([[VLMStreamDelegate alloc] init]);
  Objc<::SCStream> native;
  bridge::guarded([&] {
    native = Objc<::SCStream>::adopting([[::SCStream alloc]
        initWithFilter:static_cast<const Filter&>(*filter).native()
         configuration:toNative(configuration).get()
              delegate:receiver.get()]);
  });
  if (!native) return nullptr;
  auto stream = std::make_shared<Stream>(std::move(native), receiver);
  [receiver.get() serve:std::move(delegate) of:stream];
  return stream;
}

}  // namespace vlm::platform
