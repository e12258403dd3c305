// What is shared: a display, a window, or an application.
#pragma once

#include <xcb/randr.h>

#include <string>

#include "library.h"
#include "x.h"

namespace remote {

struct Frame {
  double x = 0, y = 0, width = 0, height = 0;
  bool operator==(const Frame&) const = default;
};

class Target {
 public:
  // One of them, or all empty for the first display.
  struct Choice {
    std::string display;  // a monitor's name, as xrandr --listmonitors prints it
    std::uint32_t window = 0;
    std::string application;  // beginning of its bundle identifier
  };

  Target(X& x, Choice choice) : x_(x), choice_(std::move(choice)) {}

  // Throws when there is no such thing.
  CaptureHandle capture(int fps, vlm_frame_cb onFrame, vlm_audio_cb onSound, void* user) {
    const Frame expected = choice_.display.empty() ? Frame{} : findMonitor();
    CaptureHandle made;
    if (choice_.window != 0) {
      made.reset(vlm_capture_start_window(choice_.window, fps, 0, 0, onFrame, onSound, user));
    } else if (!choice_.application.empty()) {
      made.reset(
          vlm_capture_start_app(choice_.application.c_str(), fps, 0, 0, onFrame, onSound, user));
    } else {
      made.reset(vlm_capture_start_display(display_, fps, 0, 0, onFrame, onSound, user));
    }
    Frame seen;
    if (!made || !vlm_capture_bounds(made.get(), &seen.x, &seen.y, &seen.width, &seen.height)) {
      throw std::runtime_error("what is to be shared can't be captured");
    }
    // The library takes the first display for one that has just gone.
    if (display_ != 0 && seen != expected) {
      throw std::runtime_error("another display would be shared");
    }
    frame_ = seen;
    return made;
  }

  // False when a window has been closed.
  bool exists() const {
    return choice_.window == 0 ||
           vlm_window_get_bounds(choice_.window, nullptr, nullptr, nullptr, nullptr);
  }

  // Where it is now, in points.
  Frame frame() const {
    Frame now = frame_;
    if (choice_.window != 0) {
      vlm_window_get_bounds(choice_.window, &now.x, &now.y, &now.width, &now.height);
    }
    return now;
  }

 private:
  Frame findMonitor() {
    display_ = x_.atom(choice_.display);
    const auto all =
        x_.ask(xcb_randr_get_monitors_reply, xcb_randr_get_monitors(x_.get(), x_.root(), 1));
    if (!all) throw std::runtime_error("the displays can't be listed");
    auto each = xcb_randr_get_monitors_monitors_iterator(all.get());
    for (; each.rem > 0; xcb_randr_monitor_info_next(&each)) {
      const auto& [name, primary, automatic, outputs, x, y, width, height, mmX, mmY] = *each.data;
      if (name == display_) return {double(x), double(y), double(width), double(height)};
    }
    throw std::runtime_error("there is no display " + choice_.display);
  }

  X& x_;
  const Choice choice_;
  std::uint32_t display_ = 0;
  Frame frame_;
};

}  // namespace remote
