#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/linux/pipewire/video_stream.h"
#include "platform/linux/portal/screen_cast.h"
#include "platform/linux/screen/content_filter.h"
#include "platform/mutex.h"

namespace vlm::platform::screen {

// The display of a Wayland session's content: the one that a person will pick. No monitor of the X
// server has this number.
inline constexpr std::uint32_t kPickedDisplay = 1;

// What shows a picked screen. The session outlives the stream.
struct OpenedScreen {
  std::unique_ptr<portal::ScreenCast> session;
  std::unique_ptr<pipewire::VideoStream> stream;
};

// A picked screen, which one capture takes.
class PickedScreen {
 public:
  explicit PickedScreen(OpenedScreen opened) : opened_(std::move(opened)) {}

  // Nothing for every capture but the first.
  std::optional<OpenedScreen> take() VLM_EXCLUDES(mutex_);

 private:
  Mutex mutex_;
  std::optional<OpenedScreen> opened_ VLM_GUARDED_BY(mutex_);
};

// Lets a person pick a screen and waits for it. Never null: a refusal is for the capture to report.
std::shared_ptr<const ContentFilter> pickScreen();

}  // namespace vlm::platform::screen
