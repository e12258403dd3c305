#include "platform/linux/screen/window_picture.h"

#include <xcb/composite.h>

#include <utility>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/window_request.h"

namespace vlm::platform::screen {

std::optional<WindowPicture> WindowPicture::of(const x11::Connection& connection,
                                               xcb_window_t window) {
  WindowPicture picture(connection);
  const xcb_pixmap_t pixmap = xcb_generate_id(connection.get());
  const x11::Reply<xcb_generic_error_t> refused(xcb_request_check(
      connection.get(),
      xcb_composite_name_window_pixmap_checked(connection.get(), window, pixmap)));
  if (refused || connection.isLost()) return std::nullopt;
  picture.pixmap_ = pixmap;
  if (!picture.measure(window)) return std::nullopt;
  return picture;
}

WindowPicture::WindowPicture(WindowPicture&& other) noexcept : connection_(other.connection_) {
  *this = std::move(other);
}

WindowPicture& WindowPicture::operator=(WindowPicture&& other) noexcept {
  std::swap(pixmap_, other.pixmap_);
  size_ = other.size_;
  border_ = other.border_;
  shadow_ = other.shadow_;
  isTranslucent_ = other.isTranslucent_;
  isUnfinished_ = other.isUnfinished_;
  parts_ = std::move(other.parts_);
  return *this;
}

WindowPicture::~WindowPicture() {
  if (pixmap_ != XCB_NONE) xcb_free_pixmap(connection_->get(), pixmap_);
}

// The window may be of another size again by now; what is read is the pixmap.
bool WindowPicture::measure(xcb_window_t window) {
  auto* c = connection_->get();
  const auto inside = xcb_get_geometry(c, window);
  const auto whole = xcb_get_geometry(c, pixmap_);
  x11::PropertyRequest shadow(*connection_, window, x11::WindowAtoms(*connection_).shadow);
  const x11::Reply<xcb_get_geometry_reply_t> ofWindow(xcb_get_geometry_reply(c, inside, nullptr));
  const x11::Reply<xcb_get_geometry_reply_t> ofPixmap(xcb_get_geometry_reply(c, whole, nullptr));
  if (!ofWindow || !ofPixmap) return false;
  border_ = ofWindow->border_width;
  const Size inner{ofPixmap->width - 2 * border_, ofPixmap->height - 2 * border_};
  shadow_ = x11::shadowIn(shadow.values(), inner);
  size_ = shadow_.within(x11::wholeOf(inner)).size();
  isTranslucent_ = ofPixmap->depth == kTranslucentDepth;
  return true;
}

void WindowPicture::limitTo(xcb_window_t window, const ServerRegion& unpainted) {
  ServerRegion shown(*connection_, window);
  ServerRegion missing(*connection_, window);
  shown.subtract(unpainted.id());
  missing.intersect(unpainted.id());
  const auto askedShown = shown.ask();
  const auto askedMissing = missing.ask();
  const auto clipped = [&](std::vector<Rectangle> areas) {
    for (auto& each : areas) each = intersection(inPicture(each), x11::wholeOf(size_));
    std::erase_if(areas, [](const Rectangle& each) { return each.isEmpty(); });
    return areas;
  };
  auto parts = clipped(shown.collect(askedShown));
  isUnfinished_ = !clipped(missing.collect(askedMissing)).empty();
  const bool isAll = parts.size() == 1 && parts.front() == x11::wholeOf(size_);
  if (!isAll) parts_ = std::move(parts);
}

}  // namespace vlm::platform::screen
