#pragma once

#include <optional>
#include <string_view>

#include "platform/application_services.h"

// How this family reads accessibility attributes: a read that fails, yields nothing or yields a
// value of another type is nothing.
namespace vlm::windows {

using Element = platform::Ref<platform::AXUIElement>;

// The attribute's value as it came; nothing when the read failed or gave no value.
std::optional<platform::CFValue> attribute(platform::AXUIElement& element, std::string_view name);

// The attribute when it is an element, else null.
Element elementAttribute(platform::AXUIElement& element, std::string_view name);

// Only a plain statement that the window is minimised counts.
bool isMinimized(platform::AXUIElement& window);

struct WindowRectangle {
  platform::CGPoint position;
  platform::CGSize size;
  bool positionConverted = false;
  bool sizeConverted = false;
};

// The window's rectangle; nothing when position or size can't be read. What was read but is no
// point or no size stays zero, and says so.
std::optional<WindowRectangle> readRectangle(platform::AXUIElement& window);

}  // namespace vlm::windows
