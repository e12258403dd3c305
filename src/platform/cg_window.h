#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/cf_value.h"

namespace vlm::platform {

using CGWindowID = std::uint32_t;
// No window. Apple defines the name, with a leading k, as a macro.
inline constexpr CGWindowID CGNullWindowID = 0;

using CGWindowListOption = std::uint32_t;
inline constexpr CGWindowListOption kCGWindowListOptionOnScreenOnly = 1;
inline constexpr CGWindowListOption kCGWindowListOptionIncludingWindow = 8;
inline constexpr CGWindowListOption kCGWindowListExcludeDesktopElements = 16;

// Keys of a window's dictionary: the owner's process id and the window's number are integers, the
// bounds a dictionary with the numbers "X", "Y", "Width" and "Height" in points.
inline constexpr std::string_view kCGWindowOwnerPID = "kCGWindowOwnerPID";
inline constexpr std::string_view kCGWindowNumber = "kCGWindowNumber";
inline constexpr std::string_view kCGWindowBounds = "kCGWindowBounds";

// The window server's windows, one dictionary each, front to back; with the including option only
// `relativeToWindow`. Nothing when the list can't be had. Any thread.
std::optional<CFArray> CGWindowListCopyWindowInfo(CGWindowListOption options,
                                                  CGWindowID relativeToWindow);

}  // namespace vlm::platform
