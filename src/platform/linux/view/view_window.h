#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

#include "platform/linux/x11/connection.h"

namespace vlm::platform::view {

// The X11 window that stands for a view. It is made unmapped on the root; wherever the host moves
// it, it fills its parent and follows the parent's size. No input ever lands in it.
class ViewWindow {
 public:
  // Four bytes of a pixel, one of which is not looked at.
  static constexpr std::uint8_t kDepth = 24;

  // Waits for the server. Null when it has no visual of 8 bits each for red, green and blue.
  static std::unique_ptr<ViewWindow> make(const x11::Connection& connection);

  xcb_window_t id() const noexcept { return window_; }
  xcb_gcontext_t context() const noexcept { return context_; }
  int width() const noexcept { return width_; }
  int height() const noexcept { return height_; }
  bool isInHost() const noexcept { return parent_ != root_; }
  // False when nothing that is drawn could be seen.
  bool isVisible() const noexcept { return mapped_ && parentMapped_ && !covered_; }

  enum class Change {
    none,
    moved,  // into another window, or out of one
    resized,
    exposed,  // what stood in the window may be lost
    gone,     // the server destroyed the window, as it does with the host's own
  };
  // May wait for the server.
  Change handle(const xcb_generic_event_t& event);

  void showBlack();
  // Leaves the window's pixels to whoever draws: no flash of black when it is resized.
  void showDrawing();
  // Unmaps the window and moves it back to the root.
  void takeOut();

 private:
  explicit ViewWindow(const x11::Connection& connection);
  void create(xcb_visualid_t visual);
  void refuseInput();
  void settleIn(xcb_window_t parent);
  void fillParent(std::uint16_t width, std::uint16_t height);
  Change handleOwn(const xcb_generic_event_t& event);
  Change handleParents(const xcb_generic_event_t& event);

  xcb_connection_t* const connection_;
  const xcb_window_t root_;
  const xcb_window_t window_;
  const xcb_gcontext_t context_;
  xcb_window_t parent_;
  int width_ = 1;  // as it is made
  int height_ = 1;
  bool mapped_ = false;
  bool parentMapped_ = true;
  bool covered_ = false;
};

}  // namespace vlm::platform::view
