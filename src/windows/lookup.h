#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/core_graphics.h"

// Single questions about windows and processes, each answered afresh. Any thread.
namespace vlm::windows {

// The process of the first running application whose bundle identifier begins with the prefix; 0
// for none, and for the empty prefix.
std::int32_t findPid(std::string_view bundlePrefix);

// The rectangle of one window by its number, as the window server gives it.
std::optional<platform::CGRect> boundsOfWindow(std::uint32_t windowId);

// The rectangle of an application's main window, or of its focused one where it has no main window.
// Nothing while that window is minimised or has no size.
std::optional<platform::CGRect> focusedBounds(std::int32_t pid);

}  // namespace vlm::windows
