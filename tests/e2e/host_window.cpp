#include "e2e/host_window.h"

#include <array>
#include <cstdlib>

#include "support/child_process.h"

namespace vlm::test {

HostWindow::HostWindow(std::uint16_t width, std::uint16_t height)
    : connection_(xcb_connect(nullptr, nullptr)), window_(xcb_generate_id(connection_)) {
  const auto& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  const std::array<std::uint32_t, 2> values{screen.white_pixel, XCB_EVENT_MASK_BUTTON_PRESS};
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen.root, 40, 30, width, height,
                    0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual,
                    XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
  map();
}

void HostWindow::place(const void* view) {
  const auto id = *static_cast<const std::uint32_t*>(view);
  xcb_reparent_window(connection_, id, window_, 7, 5);
  xcb_map_window(connection_, id);
  xcb_flush(connection_);
}

bool HostWindow::isViewable() {
  auto* attributes = xcb_get_window_attributes_reply(
      connection_, xcb_get_window_attributes(connection_, window_), nullptr);
  const bool viewable = attributes != nullptr && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
  std::free(attributes);
  return viewable;
}

void HostWindow::map() {
  // A window manager that has only just started may lose the first request.
  eventually([this] {
    xcb_map_window(connection_, window_);
    return isViewable();
  });
}

void HostWindow::unmap() {
  xcb_unmap_window(connection_, window_);
  xcb_flush(connection_);
}

void HostWindow::resize(std::uint16_t width, std::uint16_t height) {
  const std::array<std::uint32_t, 2> size{width, height};
  xcb_configure_window(connection_, window_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                       size.data());
  xcb_flush(connection_);
}

void HostWindow::destroy() {
  xcb_destroy_window(connection_, window_);
  xcb_flush(connection_);
}

int HostWindow::clicks() {
  int presses = 0;
  while (auto* event = xcb_poll_for_event(connection_)) {
    const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(*event);
    // One that fell on a window inside and was passed up names it as the child.
    if (press.response_type == XCB_BUTTON_PRESS && press.child == XCB_NONE) ++presses;
    std::free(event);
  }
  return presses;
}

}  // namespace vlm::test
