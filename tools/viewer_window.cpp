#include "viewer_window.h"

#include <unistd.h>
#include <xcb/xcb_icccm.h>

#include <array>
#include <string_view>

namespace vlm::tools {
namespace {

constexpr Size kSmallest{160, 90};

// What a window takes of the screen at first: half of it in each direction, so that both the
// window and what it shows can be seen.
Size startSize(const xcb_screen_t& screen, const Placement& placement) {
  return placement.size.value_or(Size{screen.width_in_pixels / 2, screen.height_in_pixels / 2});
}

void setText(const XConnection& connection, xcb_window_t window, xcb_atom_t property,
             xcb_atom_t type, std::string_view text) {
  xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                      static_cast<std::uint32_t>(text.size()), text.data());
}

void setNumber(const XConnection& connection, xcb_window_t window, xcb_atom_t property,
               xcb_atom_t type, std::uint32_t value) {
  xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, property, type, 32, 1,
                      &value);
}

xcb_size_hints_t sizeHints(Size size, const Placement& placement) {
  xcb_size_hints_t hints{};
  xcb_icccm_size_hints_set_min_size(&hints, kSmallest.width, kSmallest.height);
  xcb_icccm_size_hints_set_size(&hints, placement.size ? 1 : 0, size.width, size.height);
  if (placement.position) {
    xcb_icccm_size_hints_set_position(&hints, 1, placement.position->first,
                                      placement.position->second);
  }
  return hints;
}

}  // namespace

ViewerWindow::ViewerWindow(MainLoop& loop, const std::string& title, const Placement& placement)
    : loop_(loop),
      connection_(loop, [this](const xcb_generic_event_t& event) { handle(event); }),
      window_(xcb_generate_id(connection_.get())),
      frame_(xcb_generate_id(connection_.get())),
      deleteWindow_(connection_.atom("WM_DELETE_WINDOW")),
      sizeIsChosen_(placement.size.has_value()),
      size_(startSize(connection_.screen(), placement)) {
  const auto [x, y] = placement.position.value_or(std::pair{0, 0});
  const auto add = [&](xcb_window_t window, xcb_window_t parent, std::int32_t left,
                       std::int32_t top) {
    const std::array<std::uint32_t, 2> values{connection_.screen().black_pixel,
                                              XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, window, parent,
                      static_cast<std::int16_t>(left), static_cast<std::int16_t>(top),
                      static_cast<std::uint16_t>(size_.width),
                      static_cast<std::uint16_t>(size_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
  };
  add(window_, connection_.screen().root, x, y);
  add(frame_, window_, 0, 0);
  describe(title, placement);
}

ViewerWindow::~ViewerWindow() {
  xcb_destroy_window(connection_.get(), window_);
  xcb_flush(connection_.get());
}

void ViewerWindow::describe(const std::string& title, const Placement& placement) {
  using namespace std::string_view_literals;
  setText(connection_, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, title);
  setText(connection_, window_, connection_.atom("_NET_WM_NAME"), connection_.atom("UTF8_STRING"),
          title);
  setText(connection_, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, "vlm\0Vlm\0"sv);
  setNumber(connection_, window_, connection_.atom("_NET_WM_PID"), XCB_ATOM_CARDINAL,
            static_cast<std::uint32_t>(getpid()));
  setNumber(connection_, window_, connection_.atom("WM_PROTOCOLS"), XCB_ATOM_ATOM, deleteWindow_);
  auto hints = sizeHints(size_, placement);
  xcb_icccm_set_wm_normal_hints(connection_.get(), window_, &hints);
}

void ViewerWindow::place(xcb_window_t view) {
  xcb_reparent_window(connection_.get(), view, frame_, 0, 0);
  for (const xcb_window_t window : {view, frame_, window_}) {
    xcb_map_window(connection_.get(), window);
  }
  connection_.settle();
}

void ViewerWindow::showShape(Size picture) {
  if (picture == picture_) return;
  picture_ = picture;
  if (!sizeIsChosen_) {
    const Size wanted = fitted(picture, size_).size;
    const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(wanted.width),
                                              static_cast<std::uint32_t>(wanted.height)};
    xcb_configure_window(connection_.get(), window_,
                         XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values.data());
    sizeIsChosen_ = true;
  }
  arrange();
}

void ViewerWindow::arrange() {
  const Rectangle place = fitted(picture_, size_);
  const std::array<std::uint32_t, 4> values{
      static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
      static_cast<std::uint32_t>(place.size.width), static_cast<std::uint32_t>(place.size.height)};
  xcb_configure_window(connection_.get(), frame_,
                       XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                           XCB_CONFIG_WINDOW_HEIGHT,
                       values.data());
  xcb_flush(connection_.get());
}

void ViewerWindow::handle(const xcb_generic_event_t& event) {
  const auto type = typeOf(event);
  if (type == XCB_CLIENT_MESSAGE) {
    const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
    if (message.data.data32[0] == deleteWindow_) loop_.end("the viewer window was closed");
  } else if (type == XCB_CONFIGURE_NOTIFY) {
    const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    const Size size{change.width, change.height};
    if (change.window != window_ || size == size_) return;
    size_ = size;
    arrange();
  }
}

}  // namespace vlm::tools
