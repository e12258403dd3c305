#include "platform/core_foundation.h"

#import <CoreFoundation/CoreFoundation.h>

#include "platform/macos/bridge/native.h"

namespace vlm::platform {

void CFRetain(const void* object) noexcept {
  if (object != nullptr) ::CFRetain(object);
}

void CFRelease(const void* object) noexcept {
  if (object != nullptr) ::CFRelease(object);
}

namespace helpers {

void addToMainRunLoop(CFRunLoopSource& source) {
  ::CFRunLoopAddSource(::CFRunLoopGetMain(), bridge::native(source), ::kCFRunLoopDefaultMode);
}

void removeFromMainRunLoop(CFRunLoopSource& source) {
  ::CFRunLoopRemoveSource(::CFRunLoopGetMain(), bridge::native(source), ::kCFRunLoopDefaultMode);
}

}  // namespace helpers

}  // namespace vlm::platform
