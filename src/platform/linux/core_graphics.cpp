#include "platform/core_graphics.h"

#include "platform/linux/x11/access.h"

namespace vlm::platform {

bool CGPreflightScreenCaptureAccess() {
  return x11::mayCaptureScreen();
}

// X11 has no dialog for it: the answer stays what it is.
bool CGRequestScreenCaptureAccess() {
  return CGPreflightScreenCaptureAccess();
}

}  // namespace vlm::platform
