#include "windows/tracker.h"

#include <array>
#include <optional>
#include <utility>

#include "frame/guard.h"
#include "windows/accessibility.h"

namespace vlm::windows {
namespace {

struct Notification {
  std::string_view name;
  std::int32_t event;
};

// In the order of registration.
constexpr std::array kNotifications{
    Notification{platform::AXWindowMovedNotification, 0},
    Notification{platform::AXWindowResizedNotification, 1},
    Notification{platform::AXFocusedWindowChangedNotification, 2},
    Notification{platform::AXApplicationDeactivatedNotification, 3},
    Notification{platform::AXApplicationActivatedNotification, 2},
    Notification{platform::AXUIElementDestroyedNotification, 4},
};

std::optional<std::int32_t> eventCode(std::string_view name) {
  for (const auto& each : kNotifications) {
    if (each.name == name) return each.event;
  }
  return std::nullopt;
}

// Zeros when there is no such window or it can't be read, for want of memory too: the event itself
// is not lost.
WindowRectangle focusedRectangle(platform::AXUIElement& application) {
  return frame::guarded(WindowRectangle{}, [&] {
    const auto window = elementAttribute(application, platform::AXFocusedWindowAttribute);
    const auto rectangle = window ? readRectangle(*window) : std::nullopt;
    return rectangle.value_or(WindowRectangle{});
  });
}

}  // namespace

std::shared_ptr<VlmWindowTracker> VlmWindowTracker::track(std::int32_t pid, vlm_track_cb cb,
                                                          void* user) {
  auto application = platform::AXUIElementCreateApplication(pid);
  if (!application) return nullptr;
  auto tracker = std::make_shared<VlmWindowTracker>(std::move(application), cb, user);
  return tracker->observe(pid) ? tracker : nullptr;
}

bool VlmWindowTracker::observe(std::int32_t pid) {
  const auto entry = [weak = weak_from_this()](std::string_view notification) {
    if (const auto self = weak.lock()) frame::guarded([&] { self->handle(notification); });
  };
  if (platform::AXObserverCreate(pid, entry, observer_) != platform::kAXErrorSuccess ||
      !observer_) {
    return false;
  }
  // A notification that an application does not offer is one that never comes.
  for (const auto& each : kNotifications) {
    platform::AXObserverAddNotification(*observer_, *appElement_, each.name);
  }
  platform::helpers::addToMainRunLoop(platform::AXObserverGetRunLoopSource(*observer_));
  return true;
}

void VlmWindowTracker::handle(std::string_view notification) {
  const auto rectangle = focusedRectangle(*appElement_);
  const auto event = eventCode(notification);
  if (!event) return;
  const std::scoped_lock lock(delivery_);
  if (stopped_) return;
  cb_(*event, rectangle.position.x, rectangle.position.y, rectangle.size.width,
      rectangle.size.height, user_);
}

void VlmWindowTracker::stop() {
  {
    const std::scoped_lock lock(delivery_);
    stopped_ = true;
  }
  if (observer_) {
    platform::helpers::removeFromMainRunLoop(platform::AXObserverGetRunLoopSource(*observer_));
  }
  observer_ = nullptr;
}

}  // namespace vlm::windows
