#include "platform/macos/bridge/observer.h"

#include <map>
#include <memory>
#include <utility>

#include "platform/macos/bridge/values.h"
#include "platform/mutex.h"

namespace {

using Callback = vlm::platform::AXObserverCallback;
using vlm::platform::Mutex;
using vlm::platform::MutexLock;

// The callbacks of all observers, by number. A number is never used again.
class Callbacks {
 public:
  std::uintptr_t add(Callback callback) {
    const MutexLock lock(mutex_);
    callbacks_[++last_] = std::make_shared<const Callback>(std::move(callback));
    return last_;
  }
  void remove(std::uintptr_t number) {
    const MutexLock lock(mutex_);
    callbacks_.erase(number);
  }
  std::shared_ptr<const Callback> find(std::uintptr_t number) {
    const MutexLock lock(mutex_);
    const auto found = callbacks_.find(number);
    return found == callbacks_.end() ? nullptr : found->second;
  }

 private:
  Mutex mutex_;
  std::uintptr_t last_ VLM_GUARDED_BY(mutex_) = 0;
  std::map<std::uintptr_t, std::shared_ptr<const Callback>> callbacks_
      VLM_GUARDED_BY(mutex_);
};

// Never ends: an observer may end after the process's static objects.
Callbacks& callbacks() {
  static auto* const all = new Callbacks;
  return *all;
}

void deliver(AXObserverRef, AXUIElementRef, CFStringRef notification, void* number) {
  @autoreleasepool {
    const auto callback = callbacks().find(reinterpret_cast<std::uintptr_t>(number));
    if (callback) (*callback)(vlm::platform::bridge::text(notification));
  }
}

}  // namespace

@implementation VLMAccessibilityObserver

- (AXError)watch:(pid_t)pid callback:(Callback)callback {
  const auto error = ::AXObserverCreate(pid, deliver, observer_.out());
  if (error == kAXErrorSuccess) number_ = callbacks().add(std::move(callback));
  return error;
}

- (AXError)addNotification:(CFStringRef)name element:(AXUIElementRef)element {
  return ::AXObserverAddNotification(observer_.get(), element, name,
                                     reinterpret_cast<void*>(number_));
}

- (CFRunLoopSourceRef)source {
  return ::AXObserverGetRunLoopSource(observer_.get());
}

- (void)dealloc {
  callbacks().remove(number_);
  // A source that is still added would keep the observer alive, and the system working for it.
  if (observer_.get() != nullptr) {
    ::CFRunLoopRemoveSource(::CFRunLoopGetMain(), [self source], ::kCFRunLoopDefaultMode);
  }
  [super dealloc];
}

@end
