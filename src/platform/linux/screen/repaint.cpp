#include "platform/linux/screen/repaint.h"

#include <cstddef>
#include <vector>

#include "platform/linux/x11/reply.h"

namespace vlm::platform::screen {

std::vector<xcb_window_t> windowsIn(const x11::Connection& connection, xcb_window_t window) {
  constexpr std::size_t kMostWindows = 500;
  auto* c = connection.get();
  std::vector<xcb_window_t> windows{window};
  for (std::size_t i = 0; i < windows.size(); ++i) {
    const x11::Reply<xcb_query_tree_reply_t> tree(
        xcb_query_tree_reply(c, xcb_query_tree(c, windows[i]), nullptr));
    if (!tree || windows.size() + tree->children_len > kMostWindows) continue;
    const auto* children = xcb_query_tree_children(tree.get());
    windows.insert(windows.end(), children, children + tree->children_len);
  }
  return windows;
}

void exposeAnew(const x11::Connection& connection, const std::vector<xcb_window_t>& windows) {
  constexpr std::uint8_t kWithExposures = 1;
  for (const auto window : windows) {
    xcb_clear_area(connection.get(), kWithExposures, window, 0, 0, 0, 0);
  }
}

}  // namespace vlm::platform::screen
