#include "platform/linux/accessibility/window_watch.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/event.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::accessibility {
namespace {

constexpr std::uint32_t kWindowEvents =
    XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;

void select(const x11::Connection& connection, xcb_window_t window, std::uint32_t events) {
  xcb_change_window_attributes(connection.get(), window, XCB_CW_EVENT_MASK, &events);
}

}  // namespace

std::shared_ptr<WindowWatch> WindowWatch::make(std::int32_t pid, AXObserverCallback callback) {
  const x11::BrokenPipeGuard guard;
  auto connection = x11::Connection::open();
  if (!connection) return nullptr;
  return std::make_shared<WindowWatch>(std::move(connection), pid, std::move(callback));
}

WindowWatch::WindowWatch(std::unique_ptr<x11::Connection> connection, std::int32_t pid,
                         AXObserverCallback callback)
    : connection_(std::move(connection)),
      atoms_(*connection_),
      pid_(pid),
      callback_(std::move(callback)) {
  select(*connection_, connection_->screen().root, XCB_EVENT_MASK_PROPERTY_CHANGE);
  refreshWindows();
  const xcb_window_t active = x11::activeWindow(*connection_);
  active_ = isOurs(active) ? active : XCB_NONE;
  xcb_flush(connection_->get());
}

bool WindowWatch::readEvents() {
  const bool hasMore = takeEvents();
  // Told without the guard: a program that the host starts would inherit it.
  for (const auto notification : std::exchange(pending_, {})) callback_(notification);
  return hasMore;
}

// What there is by now, and not what comes meanwhile: a window that never rests must leave the main
// thread to others.
bool WindowWatch::takeEvents() {
  using Event = x11::Reply<xcb_generic_event_t>;
  const x11::BrokenPipeGuard guard;
  while (const Event event{xcb_poll_for_event(connection_->get())}) notice(*event);
  collectChanges();
  // Asking for frames may have brought further events in, which nothing on the wire will announce.
  bool hasMore = false;
  while (const Event event{xcb_poll_for_queued_event(connection_->get())}) {
    notice(*event);
    hasMore = true;
  }
  return hasMore;
}

void WindowWatch::notice(const xcb_generic_event_t& event) {
  switch (x11::typeOf(event)) {
    case XCB_CONFIGURE_NOTIFY:
      noticeMove(reinterpret_cast<const xcb_configure_notify_event_t&>(event).window);
      break;
    case XCB_REPARENT_NOTIFY:
      reparented_.insert(reinterpret_cast<const xcb_reparent_notify_event_t&>(event).window);
      break;
    case XCB_DESTROY_NOTIFY: {
      const auto window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
      if (windows_.erase(window) > 0) ++destroyed_;
      break;
    }
    case XCB_PROPERTY_NOTIFY: {
      const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      const auto atom = change.atom;
      if (atom == atoms_.shadow) moved_.insert(change.window);
      activationChanged_ |= atom == atoms_.active;
      windowsChanged_ |= atom == atoms_.clients || atom == atoms_.stacking;
      break;
    }
    default:
      break;
  }
}

// A window manager that drags a window moves its own frame, and notifies the window at the end
// only.
void WindowWatch::noticeMove(xcb_window_t window) {
  for (const auto& [id, watched] : windows_) {
    if (id == window || watched.topLevel == window) moved_.insert(id);
  }
}

void WindowWatch::watchTopLevel(xcb_window_t window) {
  const auto known = windows_.find(window);
  if (known == windows_.end()) return;
  known->second.topLevel = x11::topLevelOf(*connection_, window);
  if (known->second.topLevel != XCB_NONE) {
    select(*connection_, known->second.topLevel, kWindowEvents);
  }
  // Whatever happened before the selection is looked up once more.
  moved_.insert(window);
}

void WindowWatch::collectChanges() {
  if (std::exchange(windowsChanged_, false)) refreshWindows();
  for (const auto window : std::exchange(reparented_, {})) watchTopLevel(window);
  for (const auto window : std::exchange(moved_, {})) {
    const auto known = windows_.find(window);
    const auto frame = known == windows_.end() ? std::nullopt : x11::frameOf(*connection_, window);
    if (!frame) continue;
    const auto before = std::exchange(known->second.frame, *frame);
    if (frame->x != before.x || frame->y != before.y) report(AXWindowMovedNotification);
    if (frame->size() != before.size()) report(AXWindowResizedNotification);
  }
  for (; destroyed_ > 0; --destroyed_) report(AXUIElementDestroyedNotification);
  if (std::exchange(activationChanged_, false)) refreshActivation();
}

// Windows that are gone from the list but not destroyed yet are reported when they are.
void WindowWatch::refreshWindows() {
  for (const auto& window : x11::listManagedWindowsOf(*connection_, pid_).windows) watch(window);
}

void WindowWatch::watch(const x11::Window& window) {
  if (!windows_.emplace(window.id, Watched{window.frame, window.id}).second) return;
  select(*connection_, window.id, kWindowEvents);
  watchTopLevel(window.id);
}

// A window manager may call a window active before it lists it.
bool WindowWatch::belongs(xcb_window_t window) {
  if (window == XCB_NONE || isOurs(window)) return window != XCB_NONE;
  const auto described = x11::describeWindow(*connection_, window);
  if (!described || described->processId != pid_) return false;
  watch(*described);
  return true;
}

void WindowWatch::refreshActivation() {
  const xcb_window_t now = x11::activeWindow(*connection_);
  const xcb_window_t ours = belongs(now) ? now : XCB_NONE;
  const xcb_window_t before = std::exchange(active_, ours);
  if (ours == before) return;
  if (before == XCB_NONE) {
    report(AXApplicationActivatedNotification);
  } else if (ours == XCB_NONE) {
    report(AXApplicationDeactivatedNotification);
  } else {
    report(AXFocusedWindowChangedNotification);
  }
}

void WindowWatch::report(std::string_view notification) {
  if (wanted_.contains(notification)) pending_.push_back(notification);
}

}  // namespace vlm::platform::accessibility
