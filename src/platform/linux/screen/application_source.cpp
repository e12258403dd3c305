#include "platform/linux/screen/application_source.h"

#include <algorithm>
#include <utility>

#include "platform/linux/screen/core_rectangle.h"
#include "platform/linux/x11/event.h"
#include "platform/linux/x11/window_request.h"

namespace vlm::platform::screen {

ApplicationSource::ApplicationSource(const x11::Connection& connection,
                                     const ApplicationsTarget& target)
    : connection_(connection),
      target_(target),
      shadow_(x11::WindowAtoms(connection).shadow),
      place_(connection, target.display->displayID, pixelsOf(target.display->frame)),
      reader_(connection) {
  constexpr std::uint32_t kEvents = MonitorPlace::kRootEvents | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY |
                                    XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection.get(), connection.screen().root, XCB_CW_EVENT_MASK,
                               &kEvents);
  refreshWindows();
}

void ApplicationSource::handle(const xcb_generic_event_t& event) {
  if (place_.handle(event)) return;
  handleRoot(event);
  for (const auto& each : windows_) each.window->handle(event);
}

bool ApplicationSource::isShown(xcb_window_t window) const {
  return std::ranges::any_of(windows_, [&](const Shown& each) {
    return each.topLevel == window || each.window->id() == window;
  });
}

// Windows of others may move as they like; everything else may concern a window that is or will be
// shown.
void ApplicationSource::handleRoot(const xcb_generic_event_t& event) {
  switch (x11::typeOf(event)) {
    case XCB_CONFIGURE_NOTIFY: {
      const auto& notice = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
      isListStale_ |= isShown(notice.window);
      break;
    }
    case XCB_PROPERTY_NOTIFY: {  // the window manager's list, among others
      const auto& notice = reinterpret_cast<const xcb_property_notify_event_t&>(event);
      isListStale_ |= notice.window == connection_.screen().root || notice.atom == shadow_;
      break;
    }
    case XCB_MAP_NOTIFY:
    case XCB_UNMAP_NOTIFY:
    case XCB_DESTROY_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
      isListStale_ = true;
      break;
    default:
      break;
  }
}

bool ApplicationSource::hasChanges() const {
  // The first picture waits until all windows can be in it.
  if (isFirst_ && wakeAt().value_or(Clock::time_point::min()) > Clock::now()) return false;
  return isListStale_ || place_.isStale() ||
         std::ranges::any_of(windows_, [](const Shown& each) { return each.window->hasChanges(); });
}

std::optional<Clock::time_point> ApplicationSource::wakeAt() const {
  std::optional<Clock::time_point> first;
  for (const auto& each : windows_) {
    const auto wake = each.window->wakeAt();
    if (wake && (!first || *wake < *first)) first = wake;
  }
  return first;
}

bool ApplicationSource::isOfTarget(const x11::Window& window) const {
  return std::ranges::any_of(target_.applications, [&](const auto& application) {
    return application->bundleIdentifier == window.className.value_or("") &&
           application->processID == window.processId;
  });
}

// Menus often have no class. They are their window's application's; those of no window are that of
// any application of their process.
bool ApplicationSource::isOurs(const x11::Window& window, const Windows& all) const {
  if (std::ranges::find(target_.excepting, window.id) != target_.excepting.end()) return false;
  if (isOfTarget(window)) return true;
  constexpr int kDeepestMenu = 20;
  const auto* owner = &window;
  for (int depth = 0; depth < kDeepestMenu && !owner->className; ++depth) {
    const auto next = std::ranges::find(all, owner->transientFor, &x11::Window::id);
    if (next == all.end()) break;
    owner = &*next;
  }
  if (owner->className) return isOfTarget(*owner);
  return std::ranges::any_of(target_.applications, [&](const auto& application) {
    return application->processID == owner->processId && owner->processId != 0;
  });
}

void ApplicationSource::askChanges() {
  isPlaceNew_ = place_.isStale();
  if (isPlaceNew_) place_.refresh();
  if (std::exchange(isListStale_, false)) refreshWindows();
  isFirst_ = false;
  for (const auto& each : windows_) each.window->ask();
  for (const auto& each : windows_) each.window->await();
}

std::vector<Rectangle> ApplicationSource::takeChanges() {
  auto changes = std::exchange(changes_, {});
  for (const auto& each : windows_) {
    std::vector<Rectangle> damage;
    each.window->take(damage);
    for (const auto& area : damage) changes.push_back(area.movedBy(each.frame.x, each.frame.y));
  }
  if (isPlaceNew_) return {x11::wholeOf(size())};
  const Rectangle frame = place_.frame();
  for (auto& each : changes) each = intersection(each, frame).movedBy(-frame.x, -frame.y);
  return changes;
}

// Lists the windows anew. What moved, came, went or changed its place in the stack changed the
// content there.
void ApplicationSource::refreshWindows() {
  const auto all = x11::listAllWindows(connection_);
  auto listed = all;
  std::erase_if(listed, [&](const x11::Window& each) { return !isOurs(each, all); });
  std::vector<xcb_window_t> hidden;
  std::erase_if(listed, [&hidden](const x11::Window& each) {
    if (!each.isOnScreen) hidden.push_back(each.id);
    return !each.isOnScreen;
  });
  std::ranges::reverse(listed);
  std::vector<xcb_window_t> before;
  before.reserve(windows_.size());
  for (const auto& each : windows_) before.push_back(each.window->id());
  std::vector<Shown> next;
  next.reserve(listed.size());
  for (const auto& window : listed) next.push_back(takeOver(window));
  for (const auto& each : windows_) {
    if (each.window) changes_.push_back(each.frame);  // gone
  }
  windows_ = std::move(next);
  watchHidden(hidden);
  const bool isSameOrder =
      std::ranges::equal(windows_, before, {}, [](const Shown& each) { return each.window->id(); });
  if (isSameOrder) return;
  for (const auto& each : windows_) changes_.push_back(each.frame);
}

// The root hears nothing of a window that is shown again inside a frame that stayed.
void ApplicationSource::watchHidden(const std::vector<xcb_window_t>& hidden) {
  constexpr std::uint32_t kEvents = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  for (const auto window : hidden) {
    if (std::ranges::find(hidden_, window) != hidden_.end()) continue;
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &kEvents);
    isListStale_ = true;  // it may have been shown between the list and this
  }
  hidden_ = hidden;
}

ApplicationSource::Shown ApplicationSource::takeOver(const x11::StackedWindow& window) {
  const auto known = std::ranges::find_if(
      windows_, [&](const Shown& each) { return each.window && each.window->id() == window.id; });
  Shown shown;
  shown.topLevel = window.topLevel;
  shown.frame = window.frame;
  if (known == windows_.end()) {
    shown.window = std::make_unique<RedirectedWindow>(connection_, window.id, !isFirst_);
    return shown;
  }
  if (known->frame != window.frame) {
    changes_.push_back(known->frame);
    changes_.push_back(window.frame);
  }
  shown.window = std::move(known->window);
  return shown;
}

std::vector<Layer> ApplicationSource::layers() const {
  std::vector<Layer> result;
  const Rectangle frame = place_.frame();
  for (const auto& each : windows_) {
    // A window shows as much as its picture holds, which may still be of its former size.
    const auto& picture = each.window->picture();
    if (!picture) continue;
    result.push_back(
        {&*picture,
         x11::wholeOf(picture->size()).movedBy(each.frame.x - frame.x, each.frame.y - frame.y)});
  }
  return result;
}

void ApplicationSource::read(std::span<const Rectangle> areas, const Receiver& receive) {
  const auto shown = layers();
  reader_.read(shown, areas, receive);
}

}  // namespace vlm::platform::screen
