#include "platform/screen_capture_kit.h"

#include <algorithm>
#include <utility>

#include "platform/portable/media.h"
#include "platform/scripted/machine/machine.h"

namespace vlm::platform {
namespace {

using scripted::describe;
using scripted::Machine;
using scripted::ScriptedStream;
using Filter = std::shared_ptr<const SCContentFilter>;

class ScriptedFilter final : public SCContentFilter {
 public:
  explicit ScriptedFilter(CGRect rect)
      : rect_(rect), scale_(Machine::current().screen.pointPixelScale) {}
  CGRect contentRect() const override { return rect_; }
  double pointPixelScale() const override { return scale_; }

 private:
  const CGRect rect_;
  const double scale_;
};

Filter makeFilter(const char* initializer, std::initializer_list<CFValue> arguments, CGRect rect) {
  const auto fault = Machine::current().journal.enter(initializer, arguments);
  return fault.nothing ? nullptr : std::make_shared<ScriptedFilter>(rect);
}

CFArray windowIDs(const std::vector<std::shared_ptr<const SCWindow>>& windows) {
  CFArray ids;
  for (const auto& window : windows) ids.emplace_back(window->windowID);
  return ids;
}

const char* nameOf(SCStreamOutputType type) {
  return type == SCStreamOutputType::screen ? "screen" : "audio";
}

template <class T>
CFValue optionalValue(const std::optional<T>& value) {
  return value ? CFValue(*value) : CFValue();
}

CFDictionary describeConfiguration(const SCStreamConfiguration& configuration) {
  return {{"minimumFrameInterval", describe(configuration.minimumFrameInterval)},
          {"pixelFormat", scripted::fourCharacters(configuration.pixelFormat)},
          {"queueDepth", configuration.queueDepth},
          {"showsCursor", configuration.showsCursor},
          {"width", static_cast<std::int64_t>(configuration.width)},
          {"height", static_cast<std::int64_t>(configuration.height)},
          {"capturesAudio", optionalValue(configuration.capturesAudio)},
          {"excludesCurrentProcessAudio", optionalValue(configuration.excludesCurrentProcessAudio)},
          {"sampleRate", optionalValue(configuration.sampleRate)},
          {"channelCount", optionalValue(configuration.channelCount)}};
}

}  // namespace

void SCShareableContent::getShareableContentExcludingDesktopWindows(bool excludingDesktopWindows,
                                                                    bool onScreenWindowsOnly,
                                                                    Handler handler) {
  auto& machine = Machine::current();
  machine.journal.enter("getShareableContent", {excludingDesktopWindows, onScreenWindowsOnly});
  machine.answerLater([handler = std::move(handler), content = machine.screen.content,
                       error = machine.screen.contentError] { handler(content, error); });
}

Filter SCContentFilter::initWithDesktopIndependentWindow(std::shared_ptr<const SCWindow> window) {
  return makeFilter("initWithDesktopIndependentWindow", {window->windowID}, window->frame);
}

Filter SCContentFilter::initWithDisplayIncludingApplications(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCRunningApplication>> applications,
    std::vector<std::shared_ptr<const SCWindow>> excepting) {
  CFArray bundles;
  for (const auto& application : applications) bundles.emplace_back(application->bundleIdentifier);
  return makeFilter("initWithDisplayIncludingApplications",
                    {display->displayID, bundles, windowIDs(excepting)}, display->frame);
}

Filter SCContentFilter::initWithDisplayExcludingWindows(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCWindow>> excluding) {
  return makeFilter("initWithDisplayExcludingWindows", {display->displayID, windowIDs(excluding)},
                    display->frame);
}

std::shared_ptr<SCStream> SCStream::initWithFilter(Filter,
                                                   const SCStreamConfiguration& configuration,
                                                   std::weak_ptr<SCStreamDelegate> delegate) {
  auto& machine = Machine::current();
  machine.journal.enter("SCStream initWithFilter", {describeConfiguration(configuration)});
  auto stream = std::make_shared<ScriptedStream>(configuration, std::move(delegate));
  machine.screen.streams.push_back(stream);
  return stream;
}

namespace scripted {

std::optional<NSError> ScriptedStream::addStreamOutput(std::weak_ptr<SCStreamOutput> output,
                                                       SCStreamOutputType type,
                                                       std::shared_ptr<DispatchQueue> queue) {
  const auto fault =
      Machine::current().journal.enter("addStreamOutput", {nameOf(type), queue->label()});
  if (fault.fails()) return NSError{fault.error};
  const MutexLock lock(mutex_);
  const auto neighbour = std::ranges::find(outputs_, queue, &Output::queue);
  auto running = neighbour != outputs_.end() ? neighbour->running : std::make_shared<RunningCall>();
  outputs_.push_back({std::move(output), type, std::move(queue), std::move(running)});
  return std::nullopt;
}

std::optional<NSError> ScriptedStream::become(bool running, const char* operation) {
  const auto fault = Machine::current().journal.enter(operation);
  const MutexLock lock(mutex_);
  running_ = running && !fault.fails();
  return fault.fails() ? std::optional(NSError{fault.error}) : std::nullopt;
}

void ScriptedStream::startCaptureWithCompletionHandler(CompletionHandler handler) {
  const auto error = become(true, "startCapture");
  Machine::current().answerLater([handler = std::move(handler), error] { handler(error); });
}

void ScriptedStream::stopCaptureWithCompletionHandler(CompletionHandler handler) {
  const auto error = become(false, "stopCapture");
  std::vector<std::shared_ptr<DispatchQueue>> busy;
  {
    const MutexLock lock(mutex_);
    for (const auto& output : outputs_) {
      if (!output.running->isHere()) busy.push_back(output.queue);
    }
  }
  Machine::current().answerLater([handler = std::move(handler), error, busy = std::move(busy)] {
    for (const auto& queue : busy) queue->sync([] {});
    handler(error);
  });
}

void ScriptedStream::deliverLate() {
  const MutexLock lock(mutex_);
  running_ = true;
}

void ScriptedStream::deliver(const Ref<CMSampleBuffer>& sample, SCStreamOutputType type) {
  const MutexLock lock(mutex_);
  if (!running_) return;
  for (const auto& output : outputs_) {
    if (output.type != type) continue;
    output.queue->async([self = shared_from_this(), receiver = output.receiver,
                         running = output.running, sample, type] {
      const RunningCall::Scope scope(*running);
      if (const auto to = receiver.lock()) to->didOutputSampleBuffer(*self, *sample, type);
    });
  }
}

void ScriptedStream::end(NSError error) {
  Machine::current().answerLater([self = shared_from_this(), error = std::move(error)] {
    if (const auto delegate = self->delegate_.lock()) delegate->didStopWithError(*self, error);
  });
}

void ScreenStage::addDisplay(std::uint32_t displayID, CGRect frame) {
  content->displays.push_back(std::make_shared<SCDisplay>(SCDisplay{displayID, frame}));
}

std::shared_ptr<const SCRunningApplication> ScreenStage::addApplication(
    std::string bundleIdentifier) {
  const auto processID = static_cast<std::int32_t>(content->applications.size()) + 100;
  content->applications.push_back(std::make_shared<SCRunningApplication>(
      SCRunningApplication{std::move(bundleIdentifier), processID}));
  return content->applications.back();
}

void ScreenStage::addWindow(std::uint32_t windowID, std::optional<std::string> title, CGRect frame,
                            std::shared_ptr<const SCRunningApplication> application) {
  content->windows.push_back(std::make_shared<SCWindow>(
      SCWindow{windowID, std::move(title), frame, std::move(application)}));
}

Ref<CMSampleBuffer> makeScreenSample(std::size_t width, std::size_t height, CMTime time,
                                     const CFValue& status) {
  auto sample = makeRef<CMSampleBuffer>();
  sample->image =
      CVPixelBuffer::make(width, height, kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
  sample->timing.presentationTimeStamp = time;
  if (!status.isNull()) {
    sample->attachments = CFArray{CFDictionary{{std::string(SCStreamFrameInfoStatus), status}}};
  }
  return sample;
}

}  // namespace scripted
}  // namespace vlm::platform
