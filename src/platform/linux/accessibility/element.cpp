#include "platform/linux/accessibility/element.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/linux/x11/display.h"
#include "platform/linux/x11/list_moment.h"

namespace vlm::platform::accessibility {
namespace {

std::map<std::string, Value, std::less<>> attributesOf(const x11::Window& window) {
  std::map<std::string, Value, std::less<>> known;
  known.emplace(AXMinimizedAttribute, !window.isOnScreen);
  known.emplace(AXPositionAttribute, CGPoint{double(window.frame.x), double(window.frame.y)});
  known.emplace(AXSizeAttribute, CGSize{double(window.frame.width), double(window.frame.height)});
  known.emplace(AXTitleAttribute, window.title ? Value(*window.title) : Value());
  return known;
}

bool isNothing(const Value& value) {
  return std::holds_alternative<std::monostate>(value);
}

// The active window when it is this process's, else its frontmost one that can be seen: the one
// that comes to the front with the application.
const x11::Window& mainWindow(const std::vector<x11::Window>& windows, xcb_window_t active) {
  auto found = std::ranges::find(windows, active, &x11::Window::id);
  if (found == windows.end()) found = std::ranges::find_if(windows, &x11::Window::isOnScreen);
  return found == windows.end() ? windows.front() : *found;
}

AXError windowAttribute(const x11::Connection& connection, const Element& element,
                        std::string_view attribute, Value& value) {
  const auto window = x11::describeWindow(connection, element.window);
  if (!window) return kAXErrorInvalidUIElement;
  auto known = attributesOf(*window);
  const auto entry = known.find(attribute);
  if (entry == known.end()) return kAXErrorAttributeUnsupported;
  if (isNothing(entry->second)) return kAXErrorNoValue;
  value = std::move(entry->second);
  return kAXErrorSuccess;
}

}  // namespace

Element::Element(const x11::Window& listed)
    : processId(listed.processId), window(listed.id), known_(attributesOf(listed)) {}

bool Element::takeKnown(std::string_view attribute, Value& value) {
  const MutexLock lock(mutex_);
  const auto entry = known_.find(attribute);
  if (entry == known_.end()) return false;
  value = std::move(entry->second);
  known_.erase(entry);
  return true;
}

AXError Element::copyOfApplication(const x11::Connection& connection, std::string_view attribute,
                                   Value& value) {
  auto [windows, active] = x11::listManagedWindowsOf(connection, processId);
  x11::useFramesOfMoment(windows);
  if (windows.empty()) {
    return connection.isLost() ? kAXErrorCannotComplete : kAXErrorInvalidUIElement;
  }
  if (attribute == AXWindowsAttribute) {
    value = windows;
    return kAXErrorSuccess;
  }
  if (attribute != AXMainWindowAttribute && attribute != AXFocusedWindowAttribute) {
    return kAXErrorAttributeUnsupported;
  }
  value = mainWindow(windows, active);
  if (attribute == AXMainWindowAttribute) {
    // The question that follows is for all windows, and means those of the same moment.
    const MutexLock lock(mutex_);
    known_.insert_or_assign(std::string(AXWindowsAttribute), windows);
  }
  return kAXErrorSuccess;
}

AXError Element::copyAttribute(std::string_view attribute, Value& value) {
  if (takeKnown(attribute, value)) return isNothing(value) ? kAXErrorNoValue : kAXErrorSuccess;
  return x11::Display::shared().with<AXError>(kAXErrorCannotComplete, [&](const auto& connection) {
    return window == XCB_NONE ? copyOfApplication(connection, attribute, value)
                              : windowAttribute(connection, *this, attribute, value);
  });
}

}  // namespace vlm::platform::accessibility
