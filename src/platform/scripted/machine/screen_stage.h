#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/mutex.h"
#include "platform/running_call.h"
#include "platform/screen_capture_kit.h"

namespace vlm::platform::scripted {

// A stream that the library has made; the test plays the screen behind it.
class ScriptedStream final : public SCStream, public std::enable_shared_from_this<ScriptedStream> {
 public:
  ScriptedStream(const SCStreamConfiguration& configuration,
                 std::weak_ptr<SCStreamDelegate> delegate)
      : configuration_(configuration), delegate_(std::move(delegate)) {}

  std::optional<NSError> addStreamOutput(std::weak_ptr<SCStreamOutput> output,
                                         SCStreamOutputType type,
                                         std::shared_ptr<DispatchQueue> queue) override;
  void startCaptureWithCompletionHandler(CompletionHandler handler) override;
  void stopCaptureWithCompletionHandler(CompletionHandler handler) override;

  const SCStreamConfiguration& configuration() const { return configuration_; }
  // The object of the library that this stream reports to is still there.
  bool hasDelegate() const { return !delegate_.expired(); }

  // Submits a sample to the outputs of the type while the stream runs.
  void deliver(const Ref<CMSampleBuffer>& sample,
               SCStreamOutputType type = SCStreamOutputType::screen) VLM_EXCLUDES(mutex_);
  // Lets deliver() break the contract and submit after the stream has been stopped.
  void deliverLate() VLM_EXCLUDES(mutex_);
  // Ends the stream from the platform's side.
  void end(NSError error);

 private:
  struct Output {
    std::weak_ptr<SCStreamOutput> receiver;
    SCStreamOutputType type;
    std::shared_ptr<DispatchQueue> queue;
    std::shared_ptr<RunningCall> running;  // of all outputs on the queue
  };
  std::optional<NSError> become(bool running, const char* operation) VLM_EXCLUDES(mutex_);

  const SCStreamConfiguration configuration_;
  const std::weak_ptr<SCStreamDelegate> delegate_;
  Mutex mutex_;
  std::vector<Output> outputs_ VLM_GUARDED_BY(mutex_);
  bool running_ VLM_GUARDED_BY(mutex_) = false;
};

// The screen and what is on it.
struct ScreenStage {
  // What there is to capture; a null content is what a machine without permission answers.
  std::shared_ptr<SCShareableContent> content = std::make_shared<SCShareableContent>();
  // Comes with the content or instead of it.
  std::optional<NSError> contentError;
  double pointPixelScale = 1;
  // Streams made so far; an entry is gone when the library has let go of its stream.
  std::vector<std::weak_ptr<ScriptedStream>> streams;

  // In the order of the content: the main display first, windows front to back.
  void addDisplay(std::uint32_t displayID, CGRect frame);
  std::shared_ptr<const SCRunningApplication> addApplication(std::string bundleIdentifier);
  void addWindow(std::uint32_t windowID, std::optional<std::string> title, CGRect frame,
                 std::shared_ptr<const SCRunningApplication> application);
};

// A valid screen sample with a '420v' picture; `status` becomes its frame status unless null.
Ref<CMSampleBuffer> makeScreenSample(std::size_t width, std::size_t height, CMTime time,
                                     const CFValue& status = {});

}  // namespace vlm::platform::scripted
