#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

#include "platform/linux/x11/connection.h"

namespace vlm::platform::view {

// The X11 window of a view. It is made unmapped on the root. Where the host only moves
// it into a window, it fills that window and follows its size; once the host has sized it, the
// host's size holds. No input ever lands in it.
//
// Only its owner changes its size, since only the owner can do that together with drawing: a size
// that the host sets reaches the owner as a request.
class ViewWindow {
 public:
  // Four bytes of a pixel, one of which is not looked at.
  static constexpr std::uint8_t kDepth = 24;

  // Waits for the server. Null when it has no visual of 8 bits each for red, green and blue.
  static std::unique_ptr<ViewWindow> make(const x11::Connection& connection);
  ~ViewWindow();
  ViewWindow(const ViewWindow&) = delete;
  ViewWindow& operator=(const ViewWindow&) = delete;

  xcb_window_t id() const noexcept { return window_; }
  xcb_gcontext_t context() const noexcept { return context_; }
  bool isInHost() const noexcept { return parent_ != root_; }
  // False when nothing that is drawn could be seen.
  bool isVisible() const noexcept { return mapped_ && viewable_ && !covered_; }

  // The size that it has, or gets with the next resize().
  int width() const noexcept { return wanted_.width; }
  int height() const noexcept { return wanted_.height; }
  bool mustResize() const noexcept { return mustMove_ || wanted_ != size_; }
  // The new area is black. `andDraws` when all of it is drawn before anyone can look.
  void resize(bool andDraws);

  enum class Change {
    none,
    moved,    // into another window, or out of one
    exposed,  // the window's pixels are lost
    gone,     // the server destroyed the window, as it does with the host's own
  };
  // May wait for the server.
  Change handle(const xcb_generic_event_t& event);

  // A window further out that is unmapped makes this one invisible without any event. So the
  // server is asked with each drawing, and the answer is taken when the drawing is done; events
  // say when the window can be seen again.
  void askIfViewable();
  void takeViewable();

  void showBlack();
  // Unmaps the window and moves it back to the root.
  void takeOut();

 private:
  struct Size {
    int width = 1;  // as the window is made
    int height = 1;
    bool operator==(const Size&) const = default;
  };

  explicit ViewWindow(const x11::Connection& connection);
  void create(xcb_visualid_t visual);
  void refuseInput();
  void settleIn(const xcb_reparent_notify_event_t& event);
  void fillParent(Size size);
  void takeHostSize(Size size);
  Change handleExposure(const xcb_generic_event_t& event);
  Change handleStructure(const xcb_generic_event_t& event);
  Change handleOwn(const xcb_generic_event_t& event);

  xcb_connection_t* const connection_;
  const xcb_window_t root_;
  const xcb_window_t window_;
  const xcb_gcontext_t context_;
  const xcb_colormap_t colors_;
  xcb_window_t parent_;
  Size size_;
  Size wanted_;
  // Where the host put the window, as opposed to where it fills its parent.
  std::int16_t hostX_ = 0;
  std::int16_t hostY_ = 0;
  bool sizedByHost_ = false;
  bool mustMove_ = false;
  std::uint32_t drawnResize_ = 0;  // the number of the last resize() that draws
  bool mapped_ = false;
  bool covered_ = false;
  bool viewable_ = true;
  bool isAsked_ = false;
  xcb_get_window_attributes_cookie_t asked_{};
};

}  // namespace vlm::platform::view
