#pragma once

#include <xcb/xfixes.h>

#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::screen {

// A region that the server keeps and calculates with. Areas are relative to a window's inside.
class ServerRegion {
 public:
  // Empty.
  explicit ServerRegion(const x11::Connection& connection);
  // What of a window, border included, its shape leaves.
  ServerRegion(const x11::Connection& connection, xcb_window_t window);
  ~ServerRegion();
  ServerRegion(const ServerRegion&) = delete;
  ServerRegion& operator=(const ServerRegion&) = delete;

  // Everything that a window can have.
  void fill();
  void subtract(xcb_xfixes_region_t other);
  void intersect(xcb_xfixes_region_t other);
  xcb_xfixes_region_t id() const { return id_; }

  xcb_xfixes_fetch_region_cookie_t ask() const;
  std::vector<x11::Rectangle> collect(xcb_xfixes_fetch_region_cookie_t asked) const;

 private:
  const x11::Connection& connection_;
  const xcb_xfixes_region_t id_;
};

std::vector<x11::Rectangle> rectanglesIn(const xcb_xfixes_fetch_region_reply_t& reply);

}  // namespace vlm::platform::screen
