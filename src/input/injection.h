#pragma once

#include <cstdint>
#include <optional>

#include "platform/cg_event.h"
#include "platform/core_graphics.h"

// Drives this machine's pointer and keyboard for a remote person. Each call makes one event and
// posts it at once; nothing is remembered between calls. What can't be made is not posted. Any
// thread.
namespace vlm::input {

void moveMouse(platform::CGPoint position);
// Moves the pointer without an event.
void warpCursor(platform::CGPoint position);
// 1 is the right button, 2 the centre one, anything else the left one.
void pressMouse(std::int32_t button, bool down, platform::CGPoint position);
// Whole pixels; fractions are dropped, not carried over.
void scrollWheel(double horizontal, double vertical);
// The key is seen with exactly these modifiers, whatever is held.
void pressKey(std::uint16_t keyCode, bool down, platform::CGEventFlags flags);

std::optional<platform::CGPoint> cursorPosition();
// 0 when no application is in front.
std::int32_t frontmostPid();

}  // namespace vlm::input
