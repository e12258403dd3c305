#include "platform/linux/screen/window_source.h"

namespace vlm::platform::screen {

WindowSource::WindowSource(const x11::Connection& connection, xcb_window_t window)
    : window_(connection, window, false), reader_(connection) {}

void WindowSource::askChanges() {
  window_.ask();
  window_.await();
}

std::vector<Rectangle> WindowSource::takeChanges() {
  std::vector<Rectangle> changes;
  window_.take(changes);
  return changes;
}

void WindowSource::read(std::span<const Rectangle> areas, const Receiver& receive) {
  const auto& picture = window_.picture();
  if (!picture) return;
  const Layer layer{&*picture, x11::wholeOf(picture->size())};
  reader_.read({&layer, 1}, areas, receive);
}

std::optional<std::string> WindowSource::ended() const {
  if (!window_.isClosed()) return std::nullopt;
  return "the captured window was closed";
}

}  // namespace vlm::platform::screen
