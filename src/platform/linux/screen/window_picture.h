#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <vector>

#include "platform/linux/screen/server_region.h"
#include "platform/linux/screen/source.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/shadow.h"

namespace vlm::platform::screen {

// What a redirected window shows at one moment, without border and shadow. It keeps what was
// painted when the window gets another picture.
class WindowPicture {
 public:
  // Nothing while the window is not shown.
  static std::optional<WindowPicture> of(const x11::Connection& connection, xcb_window_t window);
  WindowPicture(WindowPicture&& other) noexcept;
  WindowPicture& operator=(WindowPicture&& other) noexcept;
  ~WindowPicture();

  // Leaves out what lies outside the window's shape and what was not painted. Waits for the server.
  void limitTo(xcb_window_t window, const ServerRegion& unpainted);

  Size size() const { return size_; }
  bool isTranslucent() const { return isTranslucent_; }
  // The parts that can be shown; nothing when all can.
  const std::optional<std::vector<Rectangle>>& parts() const { return parts_; }
  // True when something within the shape was not painted.
  bool isUnfinished() const { return isUnfinished_; }

  xcb_pixmap_t pixmap() const { return pixmap_; }
  // Where an area of the picture lies in the pixmap, and one of the window's inside in the picture.
  Rectangle inPixmap(const Rectangle& area) const {
    return area.movedBy(border_ + shadow_.left, border_ + shadow_.top);
  }
  Rectangle inPicture(const Rectangle& area) const {
    return area.movedBy(-shadow_.left, -shadow_.top);
  }

 private:
  explicit WindowPicture(const x11::Connection& connection) : connection_(&connection) {}
  bool measure(xcb_window_t window);

  const x11::Connection* connection_;
  xcb_pixmap_t pixmap_ = XCB_NONE;
  Size size_;
  int border_ = 0;
  x11::Shadow shadow_;
  bool isTranslucent_ = false;
  bool isUnfinished_ = false;
  std::optional<std::vector<Rectangle>> parts_;
};

}  // namespace vlm::platform::screen
