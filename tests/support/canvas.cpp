#include "support/canvas.h"

#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "support/child_process.h"

namespace vlm::test {
namespace {

constexpr std::uint8_t kReplace = XCB_PROP_MODE_REPLACE;
// The pixmap is larger than any size that the window is given.
constexpr std::uint16_t kPixmapWidth = 2048;
constexpr std::uint16_t kPixmapHeight = 1200;

void setText(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
             const std::string& text) {
  xcb_change_property(connection, kReplace, window, property, XCB_ATOM_STRING, 8,
                      static_cast<std::uint32_t>(text.size()), text.data());
}

// Asks the window manager to leave the window where it is put: WM_NORMAL_HINTS with USPosition.
void setPlaceHints(xcb_connection_t* connection, xcb_window_t window) {
  std::uint32_t hints[18] = {1};
  xcb_change_property(connection, kReplace, window, XCB_ATOM_WM_NORMAL_HINTS,
                      XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
}

bool isShown(xcb_connection_t* connection, xcb_window_t window) {
  const auto asked = xcb_get_window_attributes(connection, window);
  const std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> reply(
      xcb_get_window_attributes_reply(connection, asked, nullptr), &std::free);
  return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

}  // namespace

Canvas::Canvas(const std::string& name, const Place& place, std::uint32_t color)
    : connection_(xcb_connect(nullptr, nullptr)),
      window_(xcb_generate_id(connection_)),
      pixmap_(xcb_generate_id(connection_)),
      context_(xcb_generate_id(connection_)) {
  if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X server");
  const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  xcb_create_pixmap(connection_, screen->root_depth, pixmap_, screen->root, kPixmapWidth,
                    kPixmapHeight);
  xcb_create_gc(connection_, context_, pixmap_, 0, nullptr);
  xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root,
                    static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                    static_cast<std::uint16_t>(place.width),
                    static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                    XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP, &pixmap_);
  setText(connection_, window_, XCB_ATOM_WM_NAME, name);
  setText(connection_, window_, XCB_ATOM_WM_CLASS, name + '\0' + name + '\0');
  setPlaceHints(connection_, window_);
  fill({0, 0, kPixmapWidth, kPixmapHeight}, color);
  // A window manager that is just starting may lose the first request.
  const auto show = [this] {
    xcb_map_window(connection_, window_);
    return isShown(connection_, window_);
  };
  if (!eventually(show)) {
    throw std::runtime_error("the canvas was not shown");
  }
}

Canvas::~Canvas() {
  xcb_disconnect(connection_);
}

void Canvas::fill(const Place& area, std::uint32_t color) {
  const xcb_rectangle_t rectangle{
      static_cast<std::int16_t>(area.x), static_cast<std::int16_t>(area.y),
      static_cast<std::uint16_t>(area.width), static_cast<std::uint16_t>(area.height)};
  xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &color);
  xcb_poly_fill_rectangle(connection_, pixmap_, context_, 1, &rectangle);
  xcb_clear_area(connection_, 0, window_, rectangle.x, rectangle.y, rectangle.width,
                 rectangle.height);
  sync();
}

void Canvas::close() {
  xcb_destroy_window(connection_, window_);
  sync();
}

void Canvas::sync() {
  std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace vlm::test
