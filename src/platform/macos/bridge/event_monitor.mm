#include "platform/macos/bridge/event_monitor.h"

#include <utility>

#include "platform/macos/bridge/guard.h"

namespace vlm::platform::bridge {

template <class Add>
std::shared_ptr<EventMonitor> EventMonitor::make(Add&& add) {
  auto monitor = std::make_shared<EventMonitor>();
  guarded([&] { monitor->token_ = Objc<NSObject>::retaining(add()); });
  return monitor->token_ ? monitor : nullptr;
}

std::shared_ptr<EventMonitor> EventMonitor::global(NSEventMask mask, Watch handler) {
  const auto shared = std::make_shared<const Watch>(std::move(handler));
  const auto block = ^(::NSEvent* event) {
    (*shared)({event.keyCode});
  };
  return make([&] {
    return [::NSEvent addGlobalMonitorForEventsMatchingMask:static_cast<::NSEventMask>(mask)
                                                    handler:block];
  });
}

std::shared_ptr<EventMonitor> EventMonitor::local(NSEventMask mask, Filter handler) {
  const auto shared = std::make_shared<const Filter>(std::move(handler));
  const auto block = ^(::NSEvent* event) {
    const NSEvent press{event.keyCode};
    return (*shared)(press) == nullptr ? static_cast<::NSEvent*>(nil) : event;
  };
  return make([&] {
    return [::NSEvent addLocalMonitorForEventsMatchingMask:static_cast<::NSEventMask>(mask)
                                                   handler:block];
  });
}

void EventMonitor::remove() {
  const auto token = std::exchange(token_, {});
  if (token) guarded([&] { [::NSEvent removeMonitor:token.get()]; });
}

}  // namespace vlm::platform::bridge
