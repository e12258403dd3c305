#pragma once

#include <memory>

#include "platform/linux/view/display_layer.h"
#include "platform/linux/view/picture_drawing.h"
#include "platform/linux/view/view_window.h"
#include "platform/linux/view/window_image.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::view {

// Keeps a view's window showing the last picture of the view's layer, in the window's size of the
// moment. A window that the server destroys is replaced by one that the host has to place again.
// Lives on one thread.
class ViewRenderer {
 public:
  // Waits for the server. Null when no window can be made.
  static std::unique_ptr<ViewRenderer> make(std::shared_ptr<x11::Connection> connection);

  const ViewWindow& window() const noexcept { return *window_; }
  // True when the server is lost: nothing will ever be shown again.
  bool isLost() const noexcept { return lost_; }

  // Another layer takes over, which has no picture yet; null leaves the view without one.
  void setLayer(std::shared_ptr<DisplayLayer> layer);
  void takeOut() { window_->takeOut(); }
  // Waits until the server has reported everything up to now; run() then deals with it.
  void catchUp();

  // Does all there is to do now: the server's events, the layer's hand-overs, drawing. True when
  // the view came into another window. May wait for the server.
  bool run();

 private:
  ViewRenderer(std::shared_ptr<x11::Connection> connection, std::unique_ptr<ViewWindow> window);
  bool handleEvents();
  void handle(const xcb_generic_event_t& event);
  void takeFromLayer();
  void removePicture();
  void drawIfNeeded();
  void draw();
  void put(const PixelTarget& target);
  void replaceWindow();
  void loseWindow();
  void lose();

  const std::shared_ptr<x11::Connection> connection_;
  std::unique_ptr<ViewWindow> window_;
  WindowImage image_;
  PictureDrawing drawing_;
  std::shared_ptr<DisplayLayer> layer_;
  Ref<CVPixelBuffer> picture_;  // the last one; kept for when the window must be drawn anew
  bool stale_ = false;          // the window does not show it as it should
  bool moved_ = false;
  bool hasPlace_ = true;  // false after the window was lost, until the next one is placed
  bool lost_ = false;
};

}  // namespace vlm::platform::view
