#pragma once

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>
#include <cstdint>

#include "platform/application_services.h"
#include "platform/macos/bridge/owned.h"

// An accessibility observer with the callback that it serves; a Ref<AXObserver> is a reference to
// one. The system's observer keeps nothing but a number for its callback, which may be called once
// more on the main thread while the last reference goes on another: the number then leads nowhere.
@interface VLMAccessibilityObserver : NSObject {
  vlm::platform::bridge::Owned<AXObserverRef> observer_;
  std::uintptr_t number_;
}
- (AXError)watch:(pid_t)pid callback:(vlm::platform::AXObserverCallback)callback;
- (AXError)addNotification:(CFStringRef)name element:(AXUIElementRef)element;
- (CFRunLoopSourceRef)source;
@end
