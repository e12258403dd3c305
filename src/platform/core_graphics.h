#pragma once

#include <cstdint>

namespace vlm::platform {

using CGError = std::int32_t;
inline constexpr CGError kCGErrorSuccess = 0;
inline constexpr CGError kCGErrorFailure = 1000;
inline constexpr CGError kCGErrorIllegalArgument = 1001;

// Points in global display space: origin at the top-left corner of the main display, y downward.
struct CGPoint {
  double x = 0;
  double y = 0;
  friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

struct CGSize {
  double width = 0;
  double height = 0;
  friend bool operator==(const CGSize&, const CGSize&) = default;
};

struct CGRect {
  CGPoint origin;
  CGSize size;
  friend bool operator==(const CGRect&, const CGRect&) = default;
};

// True when the two rectangles share an area. Rectangles that only touch, and empty ones, share
// none. Any thread.
bool CGRectIntersectsRect(const CGRect& a, const CGRect& b) noexcept;

// Whether this process may record the screen. The first never asks the user; the second may, where
// the system can grant the right. Any thread.
bool CGPreflightScreenCaptureAccess();
bool CGRequestScreenCaptureAccess();

}  // namespace vlm::platform
