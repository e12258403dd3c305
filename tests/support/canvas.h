#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace vlm::test {

// A window of the test's own whose pixels it knows. The server repaints it from a pixmap by
// itself, so a caller need not wait for events.
class Canvas {
 public:
  using Place = xcb_rectangle_t;

  // Returns when the window is on the screen. Title and both parts of WM_CLASS are `name`.
  // A translucent one takes colours as 0xAARRGGBB, weighed by their first part.
  Canvas(const std::string& name, const Place& place, std::uint32_t color,
         bool isTranslucent = false);
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  std::uint32_t id() const { return window_; }
  // Paints a rectangle of the window and waits until the server has. Colours are 0xRRGGBB.
  void fill(const Place& area, std::uint32_t color);
  // Puts it on the screen and waits until it is there.
  void show();
  // As a closing client does.
  void close();

  // What a host does with the pointer that vlm_present_view returns.
  void adopt(const void* view, std::int16_t x = 7, std::int16_t y = 5);
  // Sizes the adopted view, as a host does that keeps room around it.
  void resizeChild(std::uint16_t width, std::uint16_t height);
  // The view's pixel at the lower right as it is seen now, blue first.
  std::array<std::uint8_t, 3> lastPixelOfChild();
  // The button presses on the window itself that have arrived since the last call.
  int clicks();

 private:
  void sync();

  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  xcb_window_t child_ = XCB_NONE;
  const std::unique_ptr<xcb_connection_t, Disconnect> owned_;
  xcb_connection_t* const connection_;
  xcb_window_t window_;
  xcb_pixmap_t pixmap_;
  xcb_gcontext_t context_;
};

}  // namespace vlm::test
