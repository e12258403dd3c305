#include "platform/cg_window.h"

#include <algorithm>
#include <string>

#include "platform/linux/desktop/display.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform {
namespace {

CFValue boundsOf(const x11::Rectangle& frame) {
  return CFDictionary{{"X", double(frame.x)},
                      {"Y", double(frame.y)},
                      {"Width", double(frame.width)},
                      {"Height", double(frame.height)}};
}

CFArray windowsOnScreen(const x11::Connection& connection) {
  CFArray list;
  for (const auto& window : x11::listManagedWindows(connection, x11::Details::frame)) {
    if (!window.isOnScreen) continue;
    list.push_back(CFDictionary{{std::string(kCGWindowNumber), window.id},
                                {std::string(kCGWindowOwnerPID), window.processId},
                                {std::string(kCGWindowBounds), boundsOf(window.frame)}});
  }
  return list;
}

// One window by its id, whether or not it is managed or shown.
CFArray oneWindow(const x11::Connection& connection, CGWindowID window) {
  const auto frame = x11::frameOf(connection, window);
  if (!frame) return {};
  return {CFDictionary{{std::string(kCGWindowNumber), window},
                       {std::string(kCGWindowBounds), boundsOf(*frame)}}};
}

}  // namespace

std::optional<CFArray> CGWindowListCopyWindowInfo(CGWindowListOption options,
                                                  CGWindowID relativeToWindow) {
  using Answer = std::optional<CFArray>;
  return desktop::Display::shared().with<Answer>(std::nullopt, [&](const auto& connection) {
    const bool one = (options & kCGWindowListOptionIncludingWindow) != 0;
    return Answer(one ? oneWindow(connection, relativeToWindow) : windowsOnScreen(connection));
  });
}

}  // namespace vlm::platform
