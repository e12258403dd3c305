#include "platform/linux/desktop/element.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "platform/linux/desktop/display.h"

namespace vlm::platform {
namespace {

using desktop::Display;

std::map<std::string, CFValue, std::less<>> attributesOf(const x11::Window& window) {
  std::map<std::string, CFValue, std::less<>> known;
  known.emplace(kAXMinimizedAttribute, !window.isOnScreen);
  known.emplace(kAXPositionAttribute, CGPoint{double(window.frame.x), double(window.frame.y)});
  known.emplace(kAXSizeAttribute, CGSize{double(window.frame.width), double(window.frame.height)});
  known.emplace(kAXTitleAttribute, window.title ? CFValue(*window.title) : CFValue());
  return known;
}

CFValue elementOf(const x11::Window& window) {
  return CFValue(makeRef<AXUIElement>(window));
}

// The active window when it is this process's, else its frontmost one that can be seen: the one
// that comes to the front with the application.
const x11::Window& mainWindow(const std::vector<x11::Window>& windows, xcb_window_t active) {
  auto found = std::ranges::find(windows, active, &x11::Window::id);
  if (found == windows.end()) found = std::ranges::find_if(windows, &x11::Window::isOnScreen);
  return found == windows.end() ? windows.front() : *found;
}

AXError windowAttribute(const x11::Connection& connection, const AXUIElement& element,
                        std::string_view attribute, CFValue& value) {
  const auto window = x11::describeWindow(connection, element.window);
  if (!window) return kAXErrorInvalidUIElement;
  auto known = attributesOf(*window);
  const auto entry = known.find(attribute);
  if (entry == known.end()) return kAXErrorAttributeUnsupported;
  if (entry->second.isNull()) return kAXErrorNoValue;
  value = std::move(entry->second);
  return kAXErrorSuccess;
}

}  // namespace

AXUIElement::AXUIElement(const x11::Window& listed)
    : processId(listed.processId), window(listed.id), known_(attributesOf(listed)) {}

bool AXUIElement::takeKnown(std::string_view attribute, CFValue& value) {
  const MutexLock lock(mutex_);
  const auto entry = known_.find(attribute);
  if (entry == known_.end()) return false;
  value = std::move(entry->second);
  known_.erase(entry);
  return true;
}

AXError AXUIElement::copyOfApplication(const x11::Connection& connection,
                                       std::string_view attribute, CFValue& value) {
  const auto [windows, active] = x11::listManagedWindowsOf(connection, processId);
  if (windows.empty()) {
    return connection.isLost() ? kAXErrorCannotComplete : kAXErrorInvalidUIElement;
  }
  CFArray elements;
  for (const auto& each : windows) elements.push_back(elementOf(each));
  if (attribute == kAXWindowsAttribute) {
    value = std::move(elements);
    return kAXErrorSuccess;
  }
  if (attribute != kAXMainWindowAttribute && attribute != kAXFocusedWindowAttribute) {
    return kAXErrorAttributeUnsupported;
  }
  value = elementOf(mainWindow(windows, active));
  if (attribute == kAXMainWindowAttribute) {
    // Whoever asks for it asks for all windows next, and means those of the same moment.
    const MutexLock lock(mutex_);
    known_.insert_or_assign(std::string(kAXWindowsAttribute), std::move(elements));
  }
  return kAXErrorSuccess;
}

AXError AXUIElement::copyAttribute(std::string_view attribute, CFValue& value) {
  if (takeKnown(attribute, value)) return value.isNull() ? kAXErrorNoValue : kAXErrorSuccess;
  return Display::shared().with<AXError>(kAXErrorCannotComplete, [&](const auto& connection) {
    return window == XCB_NONE ? copyOfApplication(connection, attribute, value)
                              : windowAttribute(connection, *this, attribute, value);
  });
}

Ref<AXUIElement> AXUIElementCreateApplication(std::int32_t pid) {
  return makeRef<AXUIElement>(pid);
}

AXError AXUIElementCopyAttributeValue(AXUIElement& element, std::string_view attribute,
                                      CFValue& value) {
  return element.copyAttribute(attribute, value);
}

bool CFEqual(const AXUIElement& a, const AXUIElement& b) {
  return a.processId == b.processId && a.window == b.window;
}

}  // namespace vlm::platform
