#include "platform/core_graphics.h"

#include "platform/macos/bridge/native.h"

namespace vlm::platform {

bool CGRectIntersectsRect(const CGRect& a, const CGRect& b) noexcept {
  return ::CGRectIntersectsRect(bridge::toNative(a), bridge::toNative(b));
}

bool CGPreflightScreenCaptureAccess() {
  return ::CGPreflightScreenCaptureAccess();
}

bool CGRequestScreenCaptureAccess() {
  return ::CGRequestScreenCaptureAccess();
}

}  // namespace vlm::platform
