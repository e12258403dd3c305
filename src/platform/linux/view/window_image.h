#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/linux/view/picture_drawing.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/shared_pixels.h"

namespace vlm::platform::view {

// The pixels that the server copies into a window. One copy is under way at a time: the pixels may
// be touched only while none is.
class WindowImage {
 public:
  explicit WindowImage(const x11::Connection& connection) : connection_(connection.get()) {}

  bool isUnderWay() const noexcept { return underWay_; }

  // True when the room that was reserved last is in the server's reach.
  bool isShared() const noexcept { return shared_ != nullptr; }

  // Room for a picture of this size.
  PixelTarget reserve(int width, int height);
  // Sends the whole target to the window's top-left corner. Where memory is shared it returns at
  // once and the copy is under way until its event arrives, else when the server has all of it.
  void put(const PixelTarget& target, xcb_window_t window, xcb_gcontext_t context);

  enum class Outcome { none, shown, refused };
  // Whether the event ends the copy under way.
  Outcome handle(const xcb_generic_event_t& event);

 private:
  void putShared(const PixelTarget& target, xcb_window_t window, xcb_gcontext_t context);
  void putThroughConnection(const PixelTarget& target, xcb_window_t window, xcb_gcontext_t context);

  xcb_connection_t* const connection_;
  std::unique_ptr<x11::SharedPixels> shared_;
  bool canShare_ = true;
  std::vector<std::uint8_t> own_;
  bool underWay_ = false;
  std::uint32_t sequence_ = 0;  // of the copy under way
};

}  // namespace vlm::platform::view
