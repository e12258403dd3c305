#include <algorithm>
#include <utility>

#include "platform/app_kit.h"
#include "platform/cg_event.h"
#include "platform/cg_window.h"
#include "platform/portable/object.h"
#include "platform/scripted/machine.h"

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

std::shared_ptr<NSEventMonitor> addMonitor(const char* kind, NSEventMask mask, bool local,
                                           std::function<const NSEvent*(const NSEvent&)> handler) {
  auto& machine = Machine::current();
  const auto line = std::string(scripted::offMainPrefix()) + "NSEvent add" + kind + "Monitor";
  if (machine.journal.enter(line, {number(mask)}).nothing) return nullptr;
  auto monitor = std::make_shared<scripted::ScriptedMonitor>(local, std::move(handler));
  machine.desktop.monitors.push_back(monitor);
  return monitor;
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

void CGWarpMouseCursorPosition(CGPoint position) {
  Machine::current().journal.enter("CGWarpMouseCursorPosition", {position});
}

void CGAssociateMouseAndMouseCursorPosition(bool connected) {
  Machine::current().journal.enter("CGAssociateMouseAndMouseCursorPosition", {connected});
}

std::optional<CFArray> CGWindowListCopyWindowInfo(CGWindowListOption options,
                                                  CGWindowID relativeToWindow) {
  auto& machine = Machine::current();
  machine.journal.enter("CGWindowListCopyWindowInfo", {options, relativeToWindow});
  return machine.desktop.windowList;
}

std::vector<NSRunningApplication> NSWorkspace::runningApplications() {
  return Machine::current().desktop.running;
}

std::optional<NSRunningApplication> NSWorkspace::frontmostApplication() {
  return Machine::current().desktop.frontmost;
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addGlobalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<void(const NSEvent&)> handler) {
  return addMonitor("Global", mask, false,
                    [handler = std::move(handler)](const NSEvent& event) -> const NSEvent* {
                      handler(event);
                      return nullptr;
                    });
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addLocalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<const NSEvent*(const NSEvent&)> handler) {
  return addMonitor("Local", mask, true, std::move(handler));
}

void NSEventMonitor::removeMonitor(const std::shared_ptr<NSEventMonitor>& monitor) {
  auto& machine = Machine::current();
  machine.journal.enter(std::string(scripted::offMainPrefix()) + "NSEvent removeMonitor");
  std::erase(machine.desktop.monitors, monitor);
}

void scripted::DesktopStage::press(std::uint16_t keyCode, bool local) {
  Machine::current().mainQueue()->async([this, keyCode, local] {
    const NSEvent event{keyCode};
    const auto now = monitors;  // a copy: handlers add and remove monitors
    for (const auto& monitor : now) {
      if (monitor->local == local && monitor->handler(event) == &event) ++passed;
    }
  });
}

}  // namespace vlm::platform
