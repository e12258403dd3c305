#include "windows/lookup.h"

#include "platform/app_kit.h"
#include "platform/cg_window.h"
#include "windows/accessibility.h"
#include "windows/window_server.h"

namespace vlm::windows {
namespace {

// The main window is asked for first; the focused one counts only where that gives no value at
// all. A value that is no element ends the search.
Element mainOrFocusedWindow(platform::AXUIElement& application) {
  auto value = attribute(application, platform::AXMainWindowAttribute);
  if (!value) value = attribute(application, platform::AXFocusedWindowAttribute);
  const auto* element = value ? value->as<Element>() : nullptr;
  return element ? *element : nullptr;
}

}  // namespace

std::int32_t findPid(std::string_view bundlePrefix) {
  if (bundlePrefix.empty()) return 0;
  for (const auto& application : platform::NSWorkspace::runningApplications()) {
    if (application.bundleIdentifier && application.bundleIdentifier->starts_with(bundlePrefix)) {
      return application.processIdentifier;
    }
  }
  return 0;
}

std::optional<platform::CGRect> boundsOfWindow(std::uint32_t windowId) {
  const auto list =
      platform::CGWindowListCopyWindowInfo(platform::kCGWindowListOptionIncludingWindow, windowId);
  if (!list || list->empty()) return std::nullopt;
  return windowBounds(list->front());
}

std::optional<platform::CGRect> focusedBounds(std::int32_t pid) {
  if (pid < 1) return std::nullopt;
  const auto application = platform::AXUIElementCreateApplication(pid);
  if (!application) return std::nullopt;
  const auto window = mainOrFocusedWindow(*application);
  if (!window || isMinimized(*window)) return std::nullopt;
  const auto rectangle = readRectangle(*window);
  if (!rectangle || !(rectangle->size.width > 0 && rectangle->size.height > 0)) return std::nullopt;
  return platform::CGRect{rectangle->position, rectangle->size};
}

}  // namespace vlm::windows
