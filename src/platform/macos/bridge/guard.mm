#include "platform/macos/bridge/guard.h"

#import <Foundation/Foundation.h>

#include "platform/macos/bridge/values.h"

bool vlmCallGuarded(void (*call)(void*), void* context, std::string* reason) {
  @autoreleasepool {
    @try {
      call(context);
      return true;
    } @catch (NSException* exception) {
      *reason = vlm::platform::bridge::text(exception.reason);
      return false;
    }
  }
}
