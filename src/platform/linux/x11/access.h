#pragma once

#include "platform/linux/x11/connection.h"

namespace vlm::platform::x11 {

// X11 grants every client all that its server offers. So a right is there when the display can be
// reached and has the extensions that the work needs, in the versions that it needs. In a Wayland
// session neither is there: its X server knows nothing of the screen, and reaches X11 clients only.
// Any thread.
bool mayCaptureScreen();
bool mayPostInput();

// True when the X server serves the X11 clients of a Wayland session.
bool isOfWayland(const Connection& connection);

}  // namespace vlm::platform::x11
