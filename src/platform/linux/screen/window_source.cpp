#include "platform/linux/screen/window_source.h"

namespace vlm::platform::screen {

WindowSource::WindowSource(const x11::Connection& connection, xcb_window_t window)
    : window_(connection, window), reader_(connection) {}

std::vector<Rectangle> WindowSource::takeChanges() {
  std::vector<Rectangle> changes;
  window_.askChanges();
  window_.collectChanges(changes);
  return changes;
}

void WindowSource::read(std::span<const Rectangle> areas, const Receiver& receive) {
  const Layer layer{&window_, x11::wholeOf(window_.size())};
  reader_.read({&layer, 1}, areas, receive);
}

std::optional<std::string> WindowSource::ended() const {
  if (!window_.isClosed()) return std::nullopt;
  return "the captured window was closed";
}

}  // namespace vlm::platform::screen
