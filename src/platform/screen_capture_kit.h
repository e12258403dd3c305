#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core_graphics.h"
#include "platform/core_media.h"
#include "platform/dispatch.h"
#include "platform/foundation.h"

namespace vlm::platform {

struct SCRunningApplication {
  std::string bundleIdentifier;
  std::int32_t processID = 0;
};

struct SCWindow {
  std::uint32_t windowID = 0;
  std::optional<std::string> title;
  CGRect frame;
  std::shared_ptr<const SCRunningApplication> owningApplication;  // may be absent
};

struct SCDisplay {
  std::uint32_t displayID = 0;
  CGRect frame;
};

// What can be captured at one moment, each list in an order of the system's choice.
struct SCShareableContent {
  using Handler =
      std::function<void(std::shared_ptr<const SCShareableContent>, std::optional<NSError>)>;

  std::vector<std::shared_ptr<const SCWindow>> windows;
  std::vector<std::shared_ptr<const SCRunningApplication>> applications;
  std::vector<std::shared_ptr<const SCDisplay>> displays;

  // Asks for the content and calls `handler` exactly once, on a thread of the platform's choosing
  // (it may be the calling one, before this returns). Content and error may both come.
  static void getShareableContentExcludingDesktopWindows(bool excludingDesktopWindows,
                                                         bool onScreenWindowsOnly, Handler handler);
};

// What one stream captures.
class SCContentFilter {
 public:
  // One window, alone and whole, wherever it is and whatever covers it.
  static std::shared_ptr<const SCContentFilter> initWithDesktopIndependentWindow(
      std::shared_ptr<const SCWindow> window);
  // On one display only the windows of these applications, at their places, less `excepting`.
  static std::shared_ptr<const SCContentFilter> initWithDisplayIncludingApplications(
      std::shared_ptr<const SCDisplay> display,
      std::vector<std::shared_ptr<const SCRunningApplication>> applications,
      std::vector<std::shared_ptr<const SCWindow>> excepting);
  // Everything on one display, less `excluding`.
  static std::shared_ptr<const SCContentFilter> initWithDisplayExcludingWindows(
      std::shared_ptr<const SCDisplay> display,
      std::vector<std::shared_ptr<const SCWindow>> excluding);

  virtual ~SCContentFilter() = default;
  // The captured rectangle in points when the filter was made.
  virtual CGRect contentRect() const = 0;
  // Pixels for each point, at least 1.
  virtual double pointPixelScale() const = 0;
};

// An unset audio property is left at the platform's default.
struct SCStreamConfiguration {
  CMTime minimumFrameInterval;
  OSType pixelFormat = 0;
  int queueDepth = 0;
  bool showsCursor = true;
  std::size_t width = 0;
  std::size_t height = 0;
  std::optional<bool> capturesAudio;
  std::optional<bool> excludesCurrentProcessAudio;
  std::optional<int> sampleRate;
  std::optional<int> channelCount;
};

enum class SCStreamOutputType : std::int64_t { screen = 0, audio = 1 };

// The key under which a screen sample's attachment dictionary holds its frame status.
inline constexpr std::string_view SCStreamFrameInfoStatus = "SCStreamUpdateFrameStatus";
enum class SCFrameStatus : std::int64_t {
  complete = 0,
  idle = 1,
  blank = 2,
  suspended = 3,
  started = 4,
  stopped = 5,
};

class SCStream;

// Receives the samples of a stream, one at a time, on the queue it was added with.
class SCStreamOutput {
 public:
  virtual ~SCStreamOutput() = default;
  virtual void didOutputSampleBuffer(SCStream& stream, CMSampleBuffer& sample,
                                     SCStreamOutputType type) = 0;
};

// Hears, once and on a thread of the platform's choosing, of a stream that ends by itself.
class SCStreamDelegate {
 public:
  virtual ~SCStreamDelegate() = default;
  virtual void didStopWithError(SCStream& stream, const NSError& error) = 0;
};

// Screen samples: the first picture comes at once after the start, then one whenever something
// changed, never closer together than the frame interval; a picture that the receiver has no
// buffer left for (it keeps queueDepth of them) is skipped and made good by the next. Sizes are
// always the configured ones: content that is resized later is scaled.
class SCStream {
 public:
  // The stream keeps filter and configuration, and output and delegate weakly.
  static std::shared_ptr<SCStream> initWithFilter(std::shared_ptr<const SCContentFilter> filter,
                                                  const SCStreamConfiguration& configuration,
                                                  std::weak_ptr<SCStreamDelegate> delegate);
  virtual ~SCStream() = default;

  // Nothing when the output was added, else why it was refused.
  virtual std::optional<NSError> addStreamOutput(std::weak_ptr<SCStreamOutput> output,
                                                 SCStreamOutputType type,
                                                 std::shared_ptr<DispatchQueue> queue) = 0;

  using CompletionHandler = std::function<void(std::optional<NSError>)>;
  // Both call the handler exactly once, on any thread. When stop calls it, with an error or
  // without, every sample that was submitted before has been handed over, and no call of an output
  // runs or follows. The one call of an output that stop itself is called from is not waited for.
  virtual void startCaptureWithCompletionHandler(CompletionHandler handler) = 0;
  virtual void stopCaptureWithCompletionHandler(CompletionHandler handler) = 0;
};

}  // namespace vlm::platform
