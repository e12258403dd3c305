#include "platform/linux/x11/visuals.h"

#include <algorithm>
#include <span>

namespace vlm::platform::x11 {
namespace {

bool hasBlueFirstMasks(const xcb_visualtype_t& visual) {
  return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == 0xFF0000 &&
         visual.green_mask == 0xFF00 && visual.blue_mask == 0xFF;
}

// A pixel is 32 bits with the lowest byte first.
bool storesPixelsSo(const xcb_setup_t& setup, int depth) {
  if (setup.image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST) return false;
  const std::span formats(xcb_setup_pixmap_formats(&setup),
                          static_cast<std::size_t>(xcb_setup_pixmap_formats_length(&setup)));
  return std::ranges::any_of(
      formats, [&](const auto& f) { return f.depth == depth && f.bits_per_pixel == 32; });
}

// The first visual of the depth that is as wanted.
template <class IsWanted>
xcb_visualid_t findVisual(const xcb_screen_t& screen, int depth, IsWanted isWanted) {
  auto depths = xcb_screen_allowed_depths_iterator(&screen);
  for (; depths.rem > 0; xcb_depth_next(&depths)) {
    if (depths.data->depth != depth) continue;
    const std::span visuals(xcb_depth_visuals(depths.data),
                            static_cast<std::size_t>(xcb_depth_visuals_length(depths.data)));
    const auto found = std::ranges::find_if(visuals, isWanted);
    if (found != visuals.end()) return found->visual_id;
  }
  return XCB_NONE;
}

}  // namespace

bool hasBlueFirstPixels(const Connection& connection) {
  const auto& screen = connection.screen();
  return storesPixelsSo(connection.setup(), screen.root_depth) &&
         findVisual(screen, screen.root_depth, [&](const xcb_visualtype_t& visual) {
           return visual.visual_id == screen.root_visual && hasBlueFirstMasks(visual);
         }) != XCB_NONE;
}

xcb_visualid_t findBlueFirstVisual(const Connection& connection, int depth) {
  if (!storesPixelsSo(connection.setup(), depth)) return XCB_NONE;
  return findVisual(connection.screen(), depth, hasBlueFirstMasks);
}

}  // namespace vlm::platform::x11
