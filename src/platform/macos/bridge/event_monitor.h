#pragma once

#import <AppKit/AppKit.h>
#include <functional>
#include <memory>

#include "platform/app_kit.h"
#include "platform/macos/bridge/objc.h"

namespace vlm::platform::bridge {

// A monitor of AppKit. Every NSEventMonitor is one. Main thread.
class EventMonitor : public NSEventMonitor {
 public:
  using Watch = std::function<void(const NSEvent&)>;
  using Filter = std::function<const NSEvent*(const NSEvent&)>;
  // Null when AppKit gives no monitor.
  static std::shared_ptr<EventMonitor> global(NSEventMask mask, Watch handler);
  static std::shared_ptr<EventMonitor> local(NSEventMask mask, Filter handler);

  ~EventMonitor() override { remove(); }
  void remove();

 private:
  // Takes the token that `add` answers.
  template <class Add>
  static std::shared_ptr<EventMonitor> make(Add&& add);

  Objc<NSObject> token_;
};

}  // namespace vlm::platform::bridge
