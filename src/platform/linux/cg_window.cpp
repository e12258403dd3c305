#include "platform/cg_window.h"

#include <algorithm>
#include <string>
#include <vector>

#include "platform/linux/x11/display.h"
#include "platform/linux/x11/list_moment.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform {
namespace {

CFValue boundsOf(const x11::Rectangle& frame) {
  return CFDictionary{{"X", double(frame.x)},
                      {"Y", double(frame.y)},
                      {"Width", double(frame.width)},
                      {"Height", double(frame.height)}};
}

bool isDesktop(const x11::Connection& connection, xcb_window_t window) {
  const auto [type, desktop] =
      x11::internAtoms<2>(connection, {"_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_DESKTOP"});
  const auto types = x11::PropertyRequest(connection, window, type).values();
  return std::ranges::count(types, desktop) != 0;
}

// Window managers keep the desktop's own windows, icons and background, below all others.
void leaveOutDesktop(const x11::Connection& connection, std::vector<x11::Window>& windows) {
  while (!windows.empty() && isDesktop(connection, windows.back().id)) windows.pop_back();
}

CFArray windowsOnScreen(const x11::Connection& connection, bool excludesDesktop) {
  CFArray list;
  auto windows = x11::listManagedWindows(connection, x11::Details::frame);
  std::erase_if(windows, [](const auto& window) { return !window.isOnScreen; });
  if (excludesDesktop) leaveOutDesktop(connection, windows);
  x11::keepFramesOfMoment(windows);
  for (const auto& window : windows) {
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
  return x11::Display::shared().with<Answer>(std::nullopt, [&](const auto& connection) {
    const bool one = (options & kCGWindowListOptionIncludingWindow) != 0;
    if (one) return Answer(oneWindow(connection, relativeToWindow));
    return Answer(
        windowsOnScreen(connection, (options & kCGWindowListExcludeDesktopElements) != 0));
  });
}

}  // namespace vlm::platform
