#pragma once

#include <optional>

#include "platform/linux/input/event.h"
#include "platform/linux/input/press_modifiers.h"
#include "platform/linux/input/wheel.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::input {

// A finite position's part as X takes it: the pixel that it lies in, or the nearest that can be
// said.
std::int16_t coordinate(double points);

// Posts events through XTEST, over the display's shared connection and under its lock.
class Poster {
 public:
  void post(const x11::Connection& connection, unsigned generation, const Event& event);

 private:
  void mouse(const x11::Connection& connection, const MouseInput& input);
  void scroll(const x11::Connection& connection, const ScrollInput& input);
  void key(const x11::Connection& connection, const KeyInput& input, CGEventFlags flags);

  unsigned generation_ = 0;
  bool supported_ = false;
  WheelAxis vertical_;
  WheelAxis horizontal_;
  PressModifiers modifiers_;
  std::optional<xcb_keycode_t> pressed_;  // last, and not released yet
};

}  // namespace vlm::platform::input
