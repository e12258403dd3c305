#pragma once

#include <memory>

#include "platform/screen_capture_kit.h"

namespace vlm::platform::screen {

// What can be captured now: what the X server shows and, in a Wayland session, a display that a
// person will pick. Null when neither can be reached.
std::shared_ptr<const SCShareableContent> currentContent(bool onScreenWindowsOnly);

}  // namespace vlm::platform::screen
