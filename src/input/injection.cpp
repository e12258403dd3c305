#include "input/injection.h"

#include "platform/app_kit.h"
#include "platform/integer.h"

namespace vlm::input {
namespace {

using platform::CGEvent;
using platform::CGEventType;
using platform::CGMouseButton;
using platform::CGPoint;
using platform::Ref;

void post(const Ref<CGEvent>& event) {
  if (event) platform::CGEventPost(platform::CGEventTapLocation::hidEventTap, *event);
}

struct ButtonEvents {
  CGEventType down;
  CGEventType up;
  CGMouseButton button;
};

ButtonEvents eventsOf(std::int32_t button) {
  switch (button) {
    case 1:
      return {CGEventType::rightMouseDown, CGEventType::rightMouseUp, CGMouseButton::right};
    case 2:
      return {CGEventType::otherMouseDown, CGEventType::otherMouseUp, CGMouseButton::center};
    default:
      return {CGEventType::leftMouseDown, CGEventType::leftMouseUp, CGMouseButton::left};
  }
}

}  // namespace

void moveMouse(CGPoint position) {
  post(platform::CGEventCreateMouseEvent(CGEventType::mouseMoved, position, CGMouseButton::left));
}

void warpCursor(CGPoint position) {
  platform::CGWarpMouseCursorPosition(position);
  // Otherwise the mouse itself would stay without effect for a moment after the warp.
  platform::CGAssociateMouseAndMouseCursorPosition(true);
}

void pressMouse(std::int32_t button, bool down, CGPoint position) {
  const auto events = eventsOf(button);
  post(platform::CGEventCreateMouseEvent(down ? events.down : events.up, position, events.button));
}

void scrollWheel(double horizontal, double vertical) {
  post(platform::CGEventCreateScrollWheelEvent2(platform::CGScrollEventUnit::pixel, 2,
                                                platform::truncated<std::int32_t>(vertical),
                                                platform::truncated<std::int32_t>(horizontal), 0));
}

void pressKey(std::uint16_t keyCode, bool down, platform::CGEventFlags flags) {
  const auto event = platform::CGEventCreateKeyboardEvent(keyCode, down);
  if (!event) return;
  platform::CGEventSetFlags(*event, flags);
  post(event);
}

std::optional<CGPoint> cursorPosition() {
  const auto event = platform::CGEventCreate();
  if (!event) return std::nullopt;
  return platform::CGEventGetLocation(*event);
}

std::int32_t frontmostPid() {
  const auto application = platform::NSWorkspace::frontmostApplication();
  return application ? application->processIdentifier : 0;
}

}  // namespace vlm::input
