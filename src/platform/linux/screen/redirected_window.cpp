#include "platform/linux/screen/redirected_window.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <algorithm>
#include <utility>

#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::screen {
namespace {

using namespace std::chrono_literals;

// Painting is taken for done when nothing was painted for a while. A window that never rests, and
// one that has nothing to paint, are shown after the limit.
constexpr auto kRepaintPause = 15ms;
constexpr auto kRepaintLimit = 150ms;

constexpr std::uint32_t kEvents =
    XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_VISIBILITY_CHANGE;

}  // namespace

RedirectedWindow::RedirectedWindow(const x11::Connection& connection, xcb_window_t window)
    : connection_(connection),
      window_(window),
      hasShape_(x11::supports(connection, x11::Extension::shape)) {
  auto* c = connection_.get();
  xcb_change_window_attributes(c, window_, XCB_CW_EVENT_MASK, &kEvents);
  if (hasShape_) xcb_shape_select_input(c, window_, 1);
  const bool wasRedirected = namePixmap();
  releasePixmap();
  xcb_composite_redirect_window(c, window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
  damage_.emplace(connection_, window_);
  if (!wasRedirected) {
    const auto now = Clock::now();
    repaint_ = {now + kRepaintLimit, now + kRepaintLimit};
    damage_->forget();  // that of the whole window, which every watch begins with
  }
}

RedirectedWindow::~RedirectedWindow() {
  damage_.reset();
  releasePixmap();
  constexpr std::uint32_t kNoEvents = XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(connection_.get(), window_, XCB_CW_EVENT_MASK, &kNoEvents);
  xcb_composite_unredirect_window(connection_.get(), window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

void RedirectedWindow::handle(const xcb_generic_event_t& event) {
  if (damage_->handle(event)) {
    handleDamage();
  } else {
    handleStructure(event);
  }
}

void RedirectedWindow::handleDamage() {
  const bool isFirst = !std::exchange(sawFirstDamage_, true);
  if (!repaint_ || isFirst) return;
  damage_->forget();
  repaint_->due = std::min(Clock::now() + kRepaintPause, repaint_->limit);
}

void RedirectedWindow::handleStructure(const xcb_generic_event_t& event) {
  const auto isOurs = [&](const auto& notice) {
    return notice.event == window_ && notice.window == window_;
  };
  const int type = x11::typeOf(event);
  if (type == XCB_CONFIGURE_NOTIFY) {
    const auto& notice = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    if (isOurs(notice) &&
        (Size{notice.width, notice.height} != size_ || notice.border_width != border_)) {
      isStale_ = true;
    }
  } else if (type == XCB_MAP_NOTIFY) {
    isStale_ |= isOurs(reinterpret_cast<const xcb_map_notify_event_t&>(event));
  } else if (type == XCB_UNMAP_NOTIFY) {
    isStale_ |= isOurs(reinterpret_cast<const xcb_unmap_notify_event_t&>(event));
  } else if (type == XCB_DESTROY_NOTIFY) {
    isClosed_ |= isOurs(reinterpret_cast<const xcb_destroy_notify_event_t&>(event));
  } else if (type == XCB_VISIBILITY_NOTIFY) {
    // Comes also when a window above it in the tree is shown again, with a new picture for this.
    isStale_ |= reinterpret_cast<const xcb_visibility_notify_event_t&>(event).window == window_;
  } else if (hasShape_ &&
             type == x11::firstEventOf(connection_, x11::Extension::shape) + XCB_SHAPE_NOTIFY) {
    isStale_ |= reinterpret_cast<const xcb_shape_notify_event_t&>(event).affected_window == window_;
  }
}

bool RedirectedWindow::hasChanges() const {
  if (isClosed_) return false;
  if (repaint_ && Clock::now() < repaint_->due) return false;
  return repaint_ || isStale_ || damage_->isDamaged();
}

std::optional<Clock::time_point> RedirectedWindow::wakeAt() const {
  if (isClosed_ || !repaint_) return std::nullopt;
  return repaint_->due;
}

void RedirectedWindow::askChanges() {
  if (!hasChanges()) return;
  if (isStale_ || repaint_) {
    repaint_.reset();
    refresh();
  }
  isAsked_ = true;
  damage_->ask();
}

void RedirectedWindow::collectChanges(std::vector<Rectangle>& changes) {
  if (!std::exchange(isAsked_, false)) return;
  damage_->collect(changes);
  if (std::exchange(isWholeChanged_, false)) changes.push_back(x11::wholeOf(size_));
}

bool RedirectedWindow::namePixmap() {
  const xcb_pixmap_t pixmap = xcb_generate_id(connection_.get());
  const x11::Reply<xcb_generic_error_t> refused(xcb_request_check(
      connection_.get(),
      xcb_composite_name_window_pixmap_checked(connection_.get(), window_, pixmap)));
  if (refused || connection_.isLost()) return false;
  pixmap_ = pixmap;
  return true;
}

void RedirectedWindow::releasePixmap() {
  if (pixmap_ != XCB_NONE) xcb_free_pixmap(connection_.get(), pixmap_);
  pixmap_ = XCB_NONE;
}

void RedirectedWindow::refresh() {
  isStale_ = false;
  isWholeChanged_ = true;
  size_ = {};
  releasePixmap();
  if (!namePixmap()) return;  // not shown
  auto* c = connection_.get();
  const auto inside = xcb_get_geometry(c, window_);
  const auto whole = xcb_get_geometry(c, pixmap_);
  const x11::Reply<xcb_get_geometry_reply_t> window(xcb_get_geometry_reply(c, inside, nullptr));
  const x11::Reply<xcb_get_geometry_reply_t> pixmap(xcb_get_geometry_reply(c, whole, nullptr));
  if (!window || !pixmap) return;
  // The window may be of another size again by now; what is read is the pixmap.
  border_ = window->border_width;
  size_ = {pixmap->width - 2 * border_, pixmap->height - 2 * border_};
  isTranslucent_ = pixmap->depth == kTranslucentDepth;
  readShape();
}

void RedirectedWindow::readShape() {
  shape_.reset();
  if (!hasShape_) return;
  auto* c = connection_.get();
  const auto askedExtents = xcb_shape_query_extents(c, window_);
  const auto askedParts = xcb_shape_get_rectangles(c, window_, XCB_SHAPE_SK_BOUNDING);
  const x11::Reply<xcb_shape_query_extents_reply_t> extents(
      xcb_shape_query_extents_reply(c, askedExtents, nullptr));
  const x11::Reply<xcb_shape_get_rectangles_reply_t> parts(
      xcb_shape_get_rectangles_reply(c, askedParts, nullptr));
  if (!extents || !parts || extents->bounding_shaped == 0) return;
  shape_.emplace();
  const auto* first = xcb_shape_get_rectangles_rectangles(parts.get());
  for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(parts.get()); ++i) {
    const Rectangle part{first[i].x, first[i].y, first[i].width, first[i].height};
    shape_->push_back(intersection(part, x11::wholeOf(size_)));
  }
}

}  // namespace vlm::platform::screen
