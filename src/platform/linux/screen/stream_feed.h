#pragma once

#include "platform/linux/screen/feed.h"
#include "platform/linux/screen/picked_screen.h"

namespace vlm::platform::screen {

// Everything on a picked screen, as the desktop streams it.
class StreamSource final : public Source {
 public:
  explicit StreamSource(pipewire::VideoStream& stream) : stream_(stream) {}

  bool hasChanges() const override { return stream_.hasDamage(); }
  void askChanges() override {}  // they came with the picture
  std::vector<Rectangle> takeChanges() override;
  Size size() const override { return size_; }
  void read(std::span<const Rectangle> areas, const Receiver& receive) override;

 private:
  pipewire::VideoStream& stream_;
  Size size_;
};

class StreamFeed final : public Feed {
 public:
  explicit StreamFeed(OpenedScreen screen) : screen_(std::move(screen)), source_(*screen_.stream) {}

  Source* open(std::string& reason) override;
  void dispatch() override { screen_.stream->dispatch(); }
  int descriptor() const override { return screen_.stream->descriptor(); }
  std::optional<std::string> lost() const override { return screen_.stream->ended(); }
  void hangUp() noexcept override { screen_.stream->hangUp(); }

 private:
  const OpenedScreen screen_;
  StreamSource source_;
};

}  // namespace vlm::platform::screen
