#pragma once

#include "platform/linux/screen/layered_reader.h"
#include "platform/linux/screen/redirected_window.h"
#include "platform/linux/screen/x11_source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// One window, alone and whole. While it is minimised there is nothing to be seen.
class WindowSource final : public X11Source {
 public:
  WindowSource(const x11::Connection& connection, xcb_window_t window);

  void handle(const xcb_generic_event_t& event) override { window_.handle(event); }
  bool hasChanges() const override { return window_.hasChanges(); }
  void askChanges() override;
  std::vector<Rectangle> takeChanges() override;
  Size size() const override { return window_.picture() ? window_.picture()->size() : Size{}; }
  void read(std::span<const Rectangle> areas, const Receiver& receive) override;
  std::optional<Clock::time_point> wakeAt() const override { return window_.wakeAt(); }
  std::optional<std::string> ended() const override;

 private:
  RedirectedWindow window_;
  LayeredReader reader_;
};

}  // namespace vlm::platform::screen
