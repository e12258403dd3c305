#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::screen {

// Knows where a window was drawn to. The server sends one event when the first damage appears and
// is silent until the damage is taken, so that a busy window costs no more than a calm one.
class DamageWatch {
 public:
  // Reports the whole window at first.
  DamageWatch(const x11::Connection& connection, xcb_window_t window);
  ~DamageWatch();
  DamageWatch(const DamageWatch&) = delete;
  DamageWatch& operator=(const DamageWatch&) = delete;

  // True when the event told of damage of this window.
  bool handle(const xcb_generic_event_t& event);
  bool isDamaged() const { return isDamaged_; }

  // Takes the damage in two steps, so that several windows are asked in one round trip: ask, then
  // collect. Rectangles are relative to the window's inside.
  void ask();
  void collect(std::vector<x11::Rectangle>& damage);
  // Takes the damage without looking at it.
  void forget();

 private:
  const x11::Connection& connection_;
  const std::uint8_t notify_;
  const std::uint32_t damage_;
  const std::uint32_t region_;
  std::uint32_t asked_ = 0;
  bool isDamaged_ = false;
};

}  // namespace vlm::platform::screen
