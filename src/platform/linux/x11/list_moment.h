#pragma once

#include <vector>

#include "platform/linux/x11/window_list.h"

namespace vlm::platform::x11 {

// A list of windows and the list of an application's windows that the same thread asks for next are
// answers of one moment: else a window that moves has two frames, and neither is wrong.

// Keeps the frames for the next call of useFramesOfMoment() on this thread, for a short time.
void keepFramesOfMoment(const std::vector<Window>& listed);
// Gives windows the frames that were kept, if any were.
void useFramesOfMoment(std::vector<Window>& windows);

}  // namespace vlm::platform::x11
