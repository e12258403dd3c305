#include "support/canvas.h"

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "support/child_process.h"

namespace vlm::test {
namespace {

// Larger than any size that the window is given.
constexpr Canvas::Place kPixmap{0, 0, 1024, 768};

template <class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

bool isShown(xcb_connection_t* connection, xcb_window_t window) {
  const auto asked = xcb_get_window_attributes(connection, window);
  const Reply<xcb_get_window_attributes_reply_t> reply(
      xcb_get_window_attributes_reply(connection, asked, nullptr), &std::free);
  return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

// The first one, which for the root's depth is the root's own.
xcb_visualid_t visualOf(const xcb_screen_t& screen, std::uint8_t depth) {
  auto depths = xcb_screen_allowed_depths_iterator(&screen);
  while (depths.rem > 0 && depths.data->depth != depth) xcb_depth_next(&depths);
  if (depths.rem == 0) throw std::runtime_error("no windows of this depth");
  return xcb_depth_visuals_iterator(depths.data).data->visual_id;
}

}  // namespace

Canvas::Canvas(const std::string& name, const Place& place, std::uint32_t color, bool isTranslucent)
    : owned_(xcb_connect(nullptr, nullptr)),
      connection_(owned_.get()),
      window_(xcb_generate_id(connection_)),
      pixmap_(xcb_generate_id(connection_)),
      context_(xcb_generate_id(connection_)) {
  if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X server");
  const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
  const std::uint8_t depth = isTranslucent ? 32 : screen->root_depth;
  const auto visual = visualOf(*screen, depth);
  const auto colors = xcb_generate_id(connection_);
  xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colors, screen->root, visual);
  xcb_create_pixmap(connection_, depth, pixmap_, screen->root, kPixmap.width, kPixmap.height);
  xcb_create_gc(connection_, context_, pixmap_, 0, nullptr);
  const std::uint32_t values[] = {pixmap_, 0, XCB_EVENT_MASK_BUTTON_PRESS, colors};
  xcb_create_window(connection_, depth, window_, screen->root, place.x, place.y, place.width,
                    place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                    XCB_CW_BACK_PIXMAP | XCB_CW_BORDER_PIXEL | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                    values);
  const auto setProperty = [&](xcb_atom_t property, xcb_atom_t type, std::uint8_t bits,
                               std::size_t count, const void* data) {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window_, property, type, bits,
                        static_cast<std::uint32_t>(count), data);
  };
  const std::string both = name + '\0' + name + '\0';
  setProperty(XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, name.size(), name.data());
  setProperty(XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8, both.size(), both.data());
  // Asks the window manager to leave the window where it is put: USPosition.
  const std::uint32_t hints[18] = {1};
  setProperty(XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, 18, hints);
  fill(kPixmap, color);
  show();
}

void Canvas::show() {
  // A window manager that is just starting may lose the first request.
  const bool shown = eventually([this] {
    xcb_map_window(connection_, window_);
    return isShown(connection_, window_) || xcb_connection_has_error(connection_) != 0;
  });
  if (!shown || xcb_connection_has_error(connection_) != 0)
    throw std::runtime_error("the canvas was not shown");
}

void Canvas::fill(const Place& area, std::uint32_t color) {
  xcb_change_gc(connection_, context_, XCB_GC_FOREGROUND, &color);
  xcb_poly_fill_rectangle(connection_, pixmap_, context_, 1, &area);
  xcb_clear_area(connection_, 0, window_, area.x, area.y, area.width, area.height);
  sync();
}

void Canvas::close() {
  xcb_destroy_window(connection_, window_);
  sync();
}

void Canvas::adopt(const void* view, std::int16_t x, std::int16_t y) {
  child_ = *static_cast<const std::uint32_t*>(view);
  xcb_reparent_window(connection_, child_, window_, x, y);
  xcb_map_window(connection_, child_);
  sync();
}

void Canvas::resizeChild(std::uint16_t width, std::uint16_t height) {
  const std::uint32_t size[] = {width, height};
  xcb_configure_window(connection_, child_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                       size);
  xcb_flush(connection_);
}

std::array<std::uint8_t, 3> Canvas::lastPixelOfChild() {
  // The view must not change between the question for its size and the one for its pixel.
  xcb_grab_server(connection_);
  const Reply<xcb_get_geometry_reply_t> place(
      xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, child_), nullptr),
      &std::free);
  if (!place) throw std::runtime_error("the view is gone");
  const auto x = static_cast<std::int16_t>(place->width - 3);
  const auto y = static_cast<std::int16_t>(place->height - 3);
  const auto asked = xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, child_, x, y, 1, 1, ~0U);
  xcb_ungrab_server(connection_);
  const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(connection_, asked, nullptr),
                                           &std::free);
  xcb_flush(connection_);
  if (!image) throw std::runtime_error("the view can't be seen");
  const auto* pixel = xcb_get_image_data(image.get());
  return {pixel[0], pixel[1], pixel[2]};
}

int Canvas::clicks() {
  int presses = 0;
  while (auto* event = xcb_poll_for_event(connection_)) {
    const auto& press = reinterpret_cast<const xcb_button_press_event_t&>(*event);
    // One that fell on a window inside and was passed up names it as the child.
    if (press.response_type == XCB_BUTTON_PRESS && press.child == XCB_NONE) ++presses;
    std::free(event);
  }
  return presses;
}

void Canvas::sync() {
  std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace vlm::test
