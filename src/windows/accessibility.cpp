#include "windows/accessibility.h"

namespace vlm::windows {

using platform::AXUIElement;
using platform::CFValue;

std::optional<CFValue> attribute(AXUIElement& element, std::string_view name) {
  CFValue value;
  if (platform::AXUIElementCopyAttributeValue(element, name, value) != platform::kAXErrorSuccess ||
      value.isNull()) {
    return std::nullopt;
  }
  return value;
}

Element elementAttribute(AXUIElement& element, std::string_view name) {
  const auto value = attribute(element, name);
  const auto* found = value ? value->as<Element>() : nullptr;
  return found ? *found : nullptr;
}

bool isMinimized(AXUIElement& window) {
  const auto value = attribute(window, platform::AXMinimizedAttribute);
  const auto* minimized = value ? value->as<bool>() : nullptr;
  return minimized != nullptr && *minimized;
}

std::optional<WindowRectangle> readRectangle(AXUIElement& window) {
  const auto position = attribute(window, platform::AXPositionAttribute);
  const auto size = attribute(window, platform::AXSizeAttribute);
  if (!position || !size) return std::nullopt;
  WindowRectangle rectangle;
  rectangle.positionConverted = platform::AXValueGetValue(*position, rectangle.position);
  rectangle.sizeConverted = platform::AXValueGetValue(*size, rectangle.size);
  return rectangle;
}

}  // namespace vlm::windows
