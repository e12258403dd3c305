#include "platform/linux/screen/stream_feed.h"

namespace vlm::platform::screen {

std::vector<Rectangle> StreamSource::takeChanges() {
  auto damage = stream_.takeDamage();
  if (size_ == stream_.size()) return damage;
  size_ = stream_.size();
  return {x11::wholeOf(size_)};
}

void StreamSource::read(std::span<const Rectangle> areas, const Receiver& receive) {
  const auto pixels = stream_.pixels();
  // None while the desktop changes their size: the next picture is new everywhere.
  if (pixels.pixels == nullptr) return;
  for (std::size_t i = 0; i < areas.size(); ++i) {
    const auto x = static_cast<std::size_t>(areas[i].x);
    receive(i, pixels.from(x * kBytesPerPixel, static_cast<std::size_t>(areas[i].y)));
  }
}

Source* StreamFeed::open(std::string&) {
  screen_.stream->begin();
  return &source_;
}

}  // namespace vlm::platform::screen
