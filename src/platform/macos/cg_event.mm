#include "platform/cg_event.h"

#import <CoreGraphics/CoreGraphics.h>

#include "platform/macos/bridge/native.h"

namespace vlm::platform {

static_assert(static_cast<int>(CGEventType::leftMouseDown) == ::kCGEventLeftMouseDown);
static_assert(static_cast<int>(CGEventType::leftMouseUp) == ::kCGEventLeftMouseUp);
static_assert(static_cast<int>(CGEventType::rightMouseDown) == ::kCGEventRightMouseDown);
static_assert(static_cast<int>(CGEventType::rightMouseUp) == ::kCGEventRightMouseUp);
static_assert(static_cast<int>(CGEventType::mouseMoved) == ::kCGEventMouseMoved);
static_assert(static_cast<int>(CGEventType::otherMouseDown) == ::kCGEventOtherMouseDown);
static_assert(static_cast<int>(CGEventType::otherMouseUp) == ::kCGEventOtherMouseUp);
static_assert(static_cast<int>(CGMouseButton::right) == ::kCGMouseButtonRight);
static_assert(static_cast<int>(CGMouseButton::center) == ::kCGMouseButtonCenter);
static_assert(static_cast<int>(CGScrollEventUnit::line) == ::kCGScrollEventUnitLine);
static_assert(static_cast<int>(CGEventTapLocation::hidEventTap) == ::kCGHIDEventTap);
static_assert(kCGEventFlagMaskAlphaShift == ::kCGEventFlagMaskAlphaShift);
static_assert(kCGEventFlagMaskShift == ::kCGEventFlagMaskShift);
static_assert(kCGEventFlagMaskControl == ::kCGEventFlagMaskControl);
static_assert(kCGEventFlagMaskAlternate == ::kCGEventFlagMaskAlternate);
static_assert(kCGEventFlagMaskCommand == ::kCGEventFlagMaskCommand);

Ref<CGEvent> CGEventCreate() {
  return bridge::adopted<CGEvent>(::CGEventCreate(nullptr));
}

Ref<CGEvent> CGEventCreateMouseEvent(CGEventType type, CGPoint position, CGMouseButton button) {
  return bridge::adopted<CGEvent>(::CGEventCreateMouseEvent(
      nullptr, static_cast<::CGEventType>(type), bridge::toNative(position),
      static_cast<::CGMouseButton>(button)));
}

Ref<CGEvent> CGEventCreateScrollWheelEvent2(CGScrollEventUnit units, std::uint32_t wheelCount,
                                            std::int32_t wheel1, std::int32_t wheel2,
                                            std::int32_t wheel3) {
  return bridge::adopted<CGEvent>(::CGEventCreateScrollWheelEvent2(
      nullptr, static_cast<::CGScrollEventUnit>(units), wheelCount, wheel1, wheel2, wheel3));
}

Ref<CGEvent> CGEventCreateKeyboardEvent(std::uint16_t keyCode, bool keyDown) {
  return bridge::adopted<CGEvent>(::CGEventCreateKeyboardEvent(nullptr, keyCode, keyDown));
}

void CGEventSetFlags(CGEvent& event, CGEventFlags flags) {
  ::CGEventSetFlags(bridge::native(event), static_cast<::CGEventFlags>(flags));
}

CGPoint CGEventGetLocation(const CGEvent& event) {
  return bridge::fromNative(::CGEventGetLocation(bridge::native(event)));
}

void CGEventPost(CGEventTapLocation tap, CGEvent& event) {
  ::CGEventPost(static_cast<::CGEventTapLocation>(tap), bridge::native(event));
}

CGError CGWarpMouseCursorPosition(CGPoint position) {
  return ::CGWarpMouseCursorPosition(bridge::toNative(position));
}

CGError CGAssociateMouseAndMouseCursorPosition(bool connected) {
  return ::CGAssociateMouseAndMouseCursorPosition(connected);
}

}  // namespace vlm::platform
