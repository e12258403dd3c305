#include "platform/core_graphics.h"

#include "platform/linux/portal/access.h"
#include "platform/linux/session/session_type.h"
#include "platform/linux/x11/access.h"

namespace vlm::platform {

bool CGPreflightScreenCaptureAccess() {
  return session::isWayland() ? portal::mayCaptureScreen() : x11::mayCaptureScreen();
}

// X11 has no dialog for it: the answer stays what it is.
bool CGRequestScreenCaptureAccess() {
  return session::isWayland() ? portal::askToCaptureScreen() : CGPreflightScreenCaptureAccess();
}

}  // namespace vlm::platform
