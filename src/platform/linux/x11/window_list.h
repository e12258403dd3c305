#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::x11 {

struct Window {
  xcb_window_t id = XCB_NONE;
  xcb_window_t topLevel = XCB_NONE;  // the child of the root that holds it; often a frame
  Rectangle frame;                   // without border and decoration, relative to the root
  std::optional<std::string> title;
  std::optional<std::string> className;  // the class part of WM_CLASS
  std::int32_t processId = 0;            // 0 when nobody knows it
  bool isOnScreen = false;               // neither minimised nor hidden in any other way
};

enum class Listing {
  // The windows that the window manager manages; without one, the children of the root.
  managed,
  // These and what is shown past the window manager: menus, tool tips and the like.
  everything,
};

// The windows of the screen, front to back. Windows that go away meanwhile are left out.
std::vector<Window> listWindows(const Connection& connection, Listing listing);

}  // namespace vlm::platform::x11
