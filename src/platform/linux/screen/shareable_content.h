#pragma once

#include <memory>

#include "platform/screen_capture_kit.h"

namespace vlm::platform::screen {

// What the display shows now. Null when the X server can't be reached.
std::shared_ptr<const SCShareableContent> currentContent(bool onScreenWindowsOnly);

}  // namespace vlm::platform::screen
