#pragma once

#include <cstdint>
#include <string>

#include "geometry.h"
#include "x_connection.h"

namespace vlm::tools {

// A window in which a view keeps the shape of its picture, on black. Main thread only.
class ViewerWindow {
 public:
  ViewerWindow(MainLoop& loop, const std::string& title, const Placement& placement);
  ~ViewerWindow();
  ViewerWindow(const ViewerWindow&) = delete;
  ViewerWindow& operator=(const ViewerWindow&) = delete;

  // Takes the view's window in and shows it. The view must end before this window does.
  void place(xcb_window_t view);
  // Gives the view the picture's shape, and the window too unless a size was asked for.
  void showShape(Size picture);
  xcb_window_t id() const { return window_; }

 private:
  void handle(const xcb_generic_event_t& event);
  void describe(const std::string& title, const Placement& placement);
  void arrange();

  MainLoop& loop_;
  XConnection connection_;
  const xcb_window_t window_;
  // Holds the view, which fills whatever it is placed in.
  const xcb_window_t frame_;
  const xcb_atom_t deleteWindow_;
  bool sizeIsChosen_;
  Size size_;
  Size picture_;
};

}  // namespace vlm::tools
