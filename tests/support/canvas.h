#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string>

namespace vlm::test {

// A window of the test's own whose pixels it knows. The server repaints it from a pixmap by
// itself, so nobody need wait for events.
class Canvas {
 public:
  struct Place {
    int x = 0;
    int y = 0;
    int width = 400;
    int height = 300;
  };

  // Returns when the window is on the screen. Title and both parts of WM_CLASS are `name`.
  Canvas(const std::string& name, const Place& place, std::uint32_t color);
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  std::uint32_t id() const { return window_; }
  // Paints a rectangle of the window and waits until the server has. Colours are 0xRRGGBB.
  void fill(const Place& area, std::uint32_t color);
  // As a closing client does.
  void close();

 private:
  void sync();

  xcb_connection_t* const connection_;
  xcb_window_t window_;
  xcb_pixmap_t pixmap_;
  xcb_gcontext_t context_;
};

}  // namespace vlm::test
