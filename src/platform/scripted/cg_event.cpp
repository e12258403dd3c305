#include "platform/cg_event.h"

#include <utility>

#include "platform/portable/object.h"
#include "platform/scripted/machine/machine.h"

namespace vlm::platform {

using scripted::Machine;

class CGEvent : public Object {
 public:
  explicit CGEvent(CFArray what, CGPoint at = {}) : description(std::move(what)), location(at) {}

  const CFArray description;
  const CGPoint location;
  std::optional<CGEventFlags> flags;
};

namespace {

Ref<CGEvent> make(const char* operation, CFArray description, CGPoint location = {}) {
  if (Machine::current().journal.enter(operation).nothing) return nullptr;
  return makeRef<CGEvent>(std::move(description), location);
}

std::int64_t number(auto value) {
  return static_cast<std::int64_t>(value);
}

}  // namespace

Ref<CGEvent> CGEventCreate() {
  return make("CGEventCreate", {}, Machine::current().desktop.pointer);
}

Ref<CGEvent> CGEventCreateMouseEvent(CGEventType type, CGPoint position, CGMouseButton button) {
  return make("CGEventCreateMouseEvent", {"mouse", number(type), position, number(button)});
}

Ref<CGEvent> CGEventCreateScrollWheelEvent2(CGScrollEventUnit units, std::uint32_t wheelCount,
                                            std::int32_t wheel1, std::int32_t wheel2,
                                            std::int32_t wheel3) {
  return make("CGEventCreateScrollWheelEvent2",
              {"wheel", number(units), wheelCount, wheel1, wheel2, wheel3});
}

Ref<CGEvent> CGEventCreateKeyboardEvent(std::uint16_t keyCode, bool keyDown) {
  return make("CGEventCreateKeyboardEvent", {"key", number(keyCode), keyDown});
}

void CGEventSetFlags(CGEvent& event, CGEventFlags flags) {
  event.flags = flags;
}

CGPoint CGEventGetLocation(const CGEvent& event) {
  return event.location;
}

void CGEventPost(CGEventTapLocation tap, CGEvent& event) {
  CFArray description = event.description;
  if (event.flags) description.emplace_back(number(*event.flags));
  Machine::current().journal.enter("CGEventPost", {number(tap), std::move(description)});
}

CGError CGWarpMouseCursorPosition(CGPoint position) {
  return Machine::current().journal.enter("CGWarpMouseCursorPosition", {position}).status;
}

CGError CGAssociateMouseAndMouseCursorPosition(bool connected) {
  return Machine::current()
      .journal.enter("CGAssociateMouseAndMouseCursorPosition", {connected})
      .status;
}

}  // namespace vlm::platform
