#pragma once

#include <cstdint>

#include "platform/core_graphics.h"
#include "platform/ref.h"

namespace vlm::platform {

enum class CGEventType : std::uint32_t {
  leftMouseDown = 1,
  leftMouseUp = 2,
  rightMouseDown = 3,
  rightMouseUp = 4,
  mouseMoved = 5,
  otherMouseDown = 25,
  otherMouseUp = 26,
};

enum class CGMouseButton : std::uint32_t { left = 0, right = 1, center = 2 };

enum class CGScrollEventUnit : std::uint32_t { pixel = 0, line = 1 };

// Modifiers that an event is to be seen with.
using CGEventFlags = std::uint64_t;
inline constexpr CGEventFlags kCGEventFlagMaskAlphaShift = 0x10000;
inline constexpr CGEventFlags kCGEventFlagMaskShift = 0x20000;
inline constexpr CGEventFlags kCGEventFlagMaskControl = 0x40000;
inline constexpr CGEventFlags kCGEventFlagMaskAlternate = 0x80000;
inline constexpr CGEventFlags kCGEventFlagMaskCommand = 0x100000;

enum class CGEventTapLocation : std::uint32_t { hidEventTap = 0 };

// An input event, made and then posted. Counted. Any thread. The makers answer null when the event
// can't be made; positions are points in global display space.
class CGEvent;

// An event without content: it knows where the pointer is.
Ref<CGEvent> CGEventCreate();
Ref<CGEvent> CGEventCreateMouseEvent(CGEventType type, CGPoint position, CGMouseButton button);
// Wheel 1 is the vertical axis, wheel 2 the horizontal one.
Ref<CGEvent> CGEventCreateScrollWheelEvent2(CGScrollEventUnit units, std::uint32_t wheelCount,
                                            std::int32_t wheel1, std::int32_t wheel2,
                                            std::int32_t wheel3);
// `keyCode` is a macOS virtual key code: a place on the keyboard, whatever the layout.
Ref<CGEvent> CGEventCreateKeyboardEvent(std::uint16_t keyCode, bool keyDown);
// Replaces the modifiers that the event is seen with, those that are held included.
void CGEventSetFlags(CGEvent& event, CGEventFlags flags);
CGPoint CGEventGetLocation(const CGEvent& event);
// Events posted by one thread arrive in order.
void CGEventPost(CGEventTapLocation tap, CGEvent& event);

// Moves the pointer without an event.
CGError CGWarpMouseCursorPosition(CGPoint position);
CGError CGAssociateMouseAndMouseCursorPosition(bool connected);

}  // namespace vlm::platform
