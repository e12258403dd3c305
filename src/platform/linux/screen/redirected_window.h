#pragma once

#include <xcb/xcb.h>

#include <optional>
#include <vector>

#include "platform/linux/screen/damage_watch.h"
#include "platform/linux/screen/source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// A window that the server draws into memory of its own, so that its picture is whole wherever it
// is and whatever covers it. It keeps looking to its user as before.
class RedirectedWindow {
 public:
  RedirectedWindow(const x11::Connection& connection, xcb_window_t window);
  ~RedirectedWindow();
  RedirectedWindow(const RedirectedWindow&) = delete;
  RedirectedWindow& operator=(const RedirectedWindow&) = delete;

  xcb_window_t id() const { return window_; }
  void handle(const xcb_generic_event_t& event);

  // Destroyed; nothing will come any more.
  bool isClosed() const { return isClosed_; }
  bool hasChanges() const;
  // When hasChanges() becomes true without an event.
  std::optional<Clock::time_point> wakeAt() const;

  // Takes the changes in two steps, as DamageWatch does. The first may wait for the server. The
  // areas are relative to the window's inside; all of it when its size changed.
  void askChanges();
  void collectChanges(std::vector<Rectangle>& changes);

  // As of the last askChanges(): what can be read. Empty for a window that is not shown.
  Size size() const { return size_; }
  // The window's picture, and where in it the window's inside begins.
  xcb_pixmap_t pixmap() const { return pixmap_; }
  int border() const { return border_; }
  bool isTranslucent() const { return isTranslucent_; }
  // The parts of the inside that belong to the window; nothing when all of it does.
  const std::optional<std::vector<Rectangle>>& shape() const { return shape_; }

 private:
  // A window that was not redirected before is painted anew by its owner, over what stood there.
  // Until that is done its picture is not its own.
  struct Repaint {
    Clock::time_point due;
    Clock::time_point limit;
  };

  void handleStructure(const xcb_generic_event_t& event);
  void handleDamage();
  bool namePixmap();
  void releasePixmap();
  void refresh();
  void readShape();

  const x11::Connection& connection_;
  const xcb_window_t window_;
  const bool hasShape_;
  std::optional<DamageWatch> damage_;
  std::optional<Repaint> repaint_;
  bool isClosed_ = false;
  bool isStale_ = true;  // the picture or its size may be another by now
  bool isWholeChanged_ = false;
  bool isAsked_ = false;
  bool sawFirstDamage_ = false;

  xcb_pixmap_t pixmap_ = XCB_NONE;
  Size size_;
  int border_ = 0;
  bool isTranslucent_ = false;
  std::optional<std::vector<Rectangle>> shape_;
};

}  // namespace vlm::platform::screen
