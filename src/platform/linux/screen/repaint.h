#pragma once

#include <xcb/xcb.h>

#include <vector>

#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// The window and all windows inside it, as far as they are of a reasonable number.
std::vector<xcb_window_t> windowsIn(const x11::Connection& connection, xcb_window_t window);

// Asks the owners of the windows to paint them again. The server paints their backgrounds itself.
void exposeAnew(const x11::Connection& connection, const std::vector<xcb_window_t>& windows);

}  // namespace vlm::platform::screen
