#pragma once

#include <optional>
#include <vector>

#include "platform/app_kit.h"

namespace vlm::platform::desktop {

// The applications with a window that the window manager knows, front to back.
std::vector<NSRunningApplication> runningApplications();
// That of the active window; nothing where no window is active.
std::optional<NSRunningApplication> frontmostApplication();

}  // namespace vlm::platform::desktop
