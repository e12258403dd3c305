#include "platform/linux/screen/picked_screen.h"

#include <algorithm>
#include <utility>

#include "platform/linux/screen/core_rectangle.h"
#include "platform/linux/x11/broken_pipe.h"

namespace vlm::platform::screen {
namespace {

using x11::Rectangle;
using x11::Size;

// The larger of the two: with a scale of 1.5 a desktop rounds the points of one direction up, and a
// pixel would be lost.
double scaleOf(Size pixels, Size points) {
  return std::max({1.0, static_cast<double>(pixels.width) / points.width,
                   static_cast<double>(pixels.height) / points.height});
}

}  // namespace

std::optional<OpenedScreen> PickedScreen::take() {
  const MutexLock lock(mutex_);
  return std::exchange(opened_, std::nullopt);
}

std::shared_ptr<const ContentFilter> pickScreen() {
  const x11::BrokenPipeGuard guard;
  std::string reason;
  OpenedScreen opened;
  opened.session = portal::ScreenCast::open(reason);
  if (opened.session) {
    const int remote = opened.session->openRemote();
    reason = "the desktop gives no connection to PipeWire";
    if (remote >= 0) {
      opened.stream =
          pipewire::VideoStream::connect(remote, opened.session->monitor().node, reason);
    }
  }
  if (!opened.stream) {
    return std::make_shared<ContentFilter>(PickedTarget{nullptr, reason}, CGRect{});
  }
  const Size pixels = opened.stream->size();
  Rectangle frame = opened.session->monitor().frame;
  if (frame.isEmpty()) frame = {frame.x, frame.y, pixels.width, pixels.height};
  return std::make_shared<ContentFilter>(
      PickedTarget{std::make_shared<PickedScreen>(std::move(opened)), ""}, pointsOf(frame),
      scaleOf(pixels, frame.size()));
}

}  // namespace vlm::platform::screen
