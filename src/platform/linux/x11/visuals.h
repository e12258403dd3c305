#pragma once

#include <xcb/xcb.h>

#include "platform/linux/x11/connection.h"

namespace vlm::platform::x11 {

// True when the root window's pixels are 32 bits in memory: blue, green, red and a spare byte.
bool hasBlueFirstPixels(const Connection& connection);

// A visual of the depth whose pixels are of that kind; XCB_NONE when there is none.
xcb_visualid_t findBlueFirstVisual(const Connection& connection, int depth);

}  // namespace vlm::platform::x11
