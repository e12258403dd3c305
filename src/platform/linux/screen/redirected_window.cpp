#include "platform/linux/screen/redirected_window.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <algorithm>
#include <utility>

#include "platform/linux/screen/repaint.h"
#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/window_request.h"

namespace vlm::platform::screen {
namespace {

using namespace std::chrono_literals;

// Painting is taken for done when nothing was painted for a while. A window that never rests is
// shown after the limit.
constexpr auto kRepaintPause = 15ms;
constexpr auto kRepaintLimit = 150ms;
// The server calls a new picture damaged as a whole, painted or not, once it has nothing else to
// do. No event tells this damage from the owner's, so that only time can.
constexpr auto kFalseDamage = 10ms;
// An owner who painted nothing by then may have done it before it could be noticed.
constexpr auto kMissedLimit = 40ms;

constexpr std::uint32_t kEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY |
                                  XCB_EVENT_MASK_VISIBILITY_CHANGE | XCB_EVENT_MASK_PROPERTY_CHANGE;

// True when the server made the event before it served the request of this number.
bool isBefore(const xcb_generic_event_t& event, std::uint32_t request) {
  return static_cast<std::int32_t>(event.full_sequence - request) < 0;  // the numbers wrap around
}

}  // namespace

RedirectedWindow::RedirectedWindow(const x11::Connection& connection, xcb_window_t window,
                                   bool isNew)
    : connection_(connection),
      window_(window),
      hasShape_(x11::supports(connection, x11::Extension::shape)),
      shadow_(x11::WindowAtoms(connection).shadow),
      damage_(connection, window),
      unpainted_(connection) {
  auto* c = connection_.get();
  xcb_change_window_attributes(c, window_, XCB_CW_EVENT_MASK, &kEvents);
  if (hasShape_) xcb_shape_select_input(c, window_, 1);
  redirect(isNew);
}

RedirectedWindow::~RedirectedWindow() {
  constexpr std::uint32_t kNoEvents = XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(connection_.get(), window_, XCB_CW_EVENT_MASK, &kNoEvents);
  xcb_composite_unredirect_window(connection_.get(), window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
}

// What others covered until now is not painted. The server announces it when there is such a part.
void RedirectedWindow::redirect(bool isNew) {
  damage_.take();  // that of the whole window, which every watch begins with
  redirected_ =
      xcb_composite_redirect_window(connection_.get(), window_, XCB_COMPOSITE_REDIRECT_AUTOMATIC)
          .sequence;
  if (isNew) beginWait();
}

void RedirectedWindow::handle(const xcb_generic_event_t& event) {
  if (damage_.handle(event)) {
    handleDamage();
  } else {
    handleStructure(event);
  }
}

void RedirectedWindow::handleDamage() {
  if (!wait_ || !damage_.isDamaged()) return;
  if (Clock::now() < wait_->countsFrom) {
    damage_.take();
    return;
  }
  takePainted();
  wait_->sawDamage = true;
  wait_->due = std::min(Clock::now() + kRepaintPause, wait_->limit);
}

void RedirectedWindow::handleStructure(const xcb_generic_event_t& event) {
  const auto isOurs = [&](const auto& notice) {
    return notice.event == window_ && notice.window == window_;
  };
  const int type = x11::typeOf(event);
  if (type == XCB_CONFIGURE_NOTIFY) {
    const auto& notice = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
    const Outline outline{{notice.width, notice.height}, notice.border_width};
    if (!isOurs(notice)) return;
    if (std::exchange(outline_, outline) != outline) {
      handleNewPicture(event);
    } else {
      handleMove(event);
    }
  } else if (type == XCB_MAP_NOTIFY) {
    if (isOurs(reinterpret_cast<const xcb_map_notify_event_t&>(event))) handleNewPicture(event);
  } else if (type == XCB_UNMAP_NOTIFY) {
    if (!isOurs(reinterpret_cast<const xcb_unmap_notify_event_t&>(event))) return;
    isStale_ = true;
    wait_.reset();
  } else if (type == XCB_PROPERTY_NOTIFY) {
    const auto& notice = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    isStale_ |= notice.window == window_ && notice.atom == shadow_;
  } else if (type == XCB_DESTROY_NOTIFY) {
    isClosed_ |= isOurs(reinterpret_cast<const xcb_destroy_notify_event_t&>(event));
  } else if (type == XCB_VISIBILITY_NOTIFY) {
    // Comes also when a window above it in the tree is shown again, with a new picture for this.
    const auto& notice = reinterpret_cast<const xcb_visibility_notify_event_t&>(event);
    if (notice.window == window_) handleNewPicture(event);
  } else if (hasShape_ &&
             type == x11::firstEventOf(connection_, x11::Extension::shape) + XCB_SHAPE_NOTIFY) {
    isStale_ |= reinterpret_cast<const xcb_shape_notify_event_t&>(event).affected_window == window_;
  }
}

void RedirectedWindow::handleNewPicture(const xcb_generic_event_t& event) {
  if (isBefore(event, redirected_)) return;
  // A wait that began after the new picture was there covers it.
  if (!wait_ || !damage_.isBeforeLastTake(event)) beginWait();
}

// A moved window is called damaged, too.
void RedirectedWindow::handleMove(const xcb_generic_event_t& event) {
  const bool isUnfinished = wait_ || (picture_ && picture_->isUnfinished());
  if (!isUnfinished || damage_.isBeforeLastTake(event)) return;
  beginWait();
}

// Damage of before belongs to the former picture or is what the server calls damaged when it makes
// a new one. It is dropped, and with it what a quick owner has painted by now.
void RedirectedWindow::beginWait() {
  isStale_ = true;
  mayHaveMissed_ = true;
  damage_.take();
  unpainted_.fill();
  const auto now = Clock::now();
  wait_ = {now + kMissedLimit, now + kRepaintLimit, now + kFalseDamage};
}

void RedirectedWindow::takePainted() {
  damage_.take();
  unpainted_.subtract(damage_.region());
}

void RedirectedWindow::askForRepaint() {
  isStale_ = true;
  mayHaveMissed_ = false;
  const auto inside = windowsIn(connection_, window_);
  damage_.take();
  exposeAnew(connection_, inside);
  const auto now = Clock::now();
  wait_ = {now + kRepaintLimit, now + kRepaintLimit, now};
}

bool RedirectedWindow::hasChanges() const {
  if (isClosed_) return false;
  if (wait_ && Clock::now() < wait_->due) return false;
  return wait_ || isStale_ || damage_.isDamaged();
}

std::optional<Clock::time_point> RedirectedWindow::wakeAt() const {
  if (isClosed_ || !wait_) return std::nullopt;
  return wait_->due;
}

void RedirectedWindow::ask() {
  if (!hasChanges()) return;
  if (wait_ && !wait_->sawDamage && mayHaveMissed_) {
    askForRepaint();
    return;
  }
  isAsked_ = true;
  isRenewing_ = isStale_ || wait_ || (picture_ && picture_->isUnfinished());
  wait_.reset();
  isStale_ = false;
  if (isRenewing_) next_ = WindowPicture::of(connection_, window_);
  damage_.ask();
  unpainted_.subtract(damage_.region());
}

void RedirectedWindow::await() {
  if (!isAsked_) return;
  damage_.collect(damaged_);
  if (next_) next_->limitTo(window_, unpainted_);
}

void RedirectedWindow::take(std::vector<Rectangle>& changes) {
  if (!std::exchange(isAsked_, false)) return;
  const auto damaged = std::exchange(damaged_, {});
  auto next = std::exchange(next_, std::nullopt);
  if (isRenewing_ && !isStale_) {  // else the answers mix two pictures
    if (next && next->isUnfinished() && mayHaveMissed_) {
      askForRepaint();
      return;
    }
    picture_ = std::move(next);
    if (picture_) changes.push_back(x11::wholeOf(picture_->size()));
    return;
  }
  if (!picture_) return;
  for (const auto& each : damaged) changes.push_back(picture_->inPicture(each));
}

}  // namespace vlm::platform::screen
