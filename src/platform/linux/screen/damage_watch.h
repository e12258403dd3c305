#pragma once

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

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

  // True when the event is about damage of this window.
  bool handle(const xcb_generic_event_t& event);
  // True when there is damage that was not taken yet.
  bool isDamaged() const { return isDamaged_; }
  // True when the server made the event before it last gave damage away.
  bool isBeforeLastTake(const xcb_generic_event_t& event) const;

  // Takes the damage in two steps, so that several windows are asked in one round trip: ask, then
  // collect. Rectangles are relative to the window's inside.
  void ask();
  void collect(std::vector<x11::Rectangle>& damage);
  // The server's region of the damage that ask() or take() took last.
  xcb_xfixes_region_t region() const { return region_; }
  // Takes the damage into the region alone.
  void take();

 private:
  const x11::Connection& connection_;
  const std::uint8_t notify_;
  const std::uint32_t damage_;
  const std::uint32_t region_;
  std::uint32_t taken_ = 0;  // the numbers of the last requests
  std::uint32_t asked_ = 0;
  bool isDamaged_ = false;
};

}  // namespace vlm::platform::screen
