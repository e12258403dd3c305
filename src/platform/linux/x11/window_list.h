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
  Rectangle frame;  // without border, decoration and shadow, relative to the root
  std::optional<std::string> title;
  std::optional<std::string> className;  // the class part of WM_CLASS
  std::int32_t processId = 0;            // 0 when it is not known
  xcb_window_t transientFor = XCB_NONE;  // the window that this one belongs to
  bool isOnScreen = false;               // neither minimised nor hidden in any other way
};

// How much of it is asked for: title and class cost requests of their own.
enum class Details { frame, all };

struct StackedWindow : Window {
  xcb_window_t topLevel = XCB_NONE;  // the child of the root that holds it; often a frame
};

// The windows that the window manager manages, minimised ones included; without one, the children
// of the root that are shown. Front to back; windows that go away meanwhile are left out.
std::vector<Window> listManagedWindows(const Connection& connection,
                                       Details details = Details::all);

struct ManagedWindows {
  std::vector<Window> windows;
  xcb_window_t active = XCB_NONE;  // as activeWindow() returns it, of any process
};

// Those of one process; the others are asked for nothing but theirs.
ManagedWindows listManagedWindowsOf(const Connection& connection, std::int32_t processId);

// These and what is shown past the window manager: menus, tool tips and the like.
std::vector<StackedWindow> listAllWindows(const Connection& connection);

// The window that the window manager calls active; without one, the child of the root with the
// keyboard focus. None when there is neither.
xcb_window_t activeWindow(const Connection& connection);

// A window's frame, as in Window; nothing when it is gone.
std::optional<Rectangle> frameOf(const Connection& connection, xcb_window_t window);

// Its ancestor directly below the root, often a frame of the window manager's; none when it is
// gone.
xcb_window_t topLevelOf(const Connection& connection, xcb_window_t window);

// One managed window; nothing when it is gone.
std::optional<Window> describeWindow(const Connection& connection, xcb_window_t window);

}  // namespace vlm::platform::x11
