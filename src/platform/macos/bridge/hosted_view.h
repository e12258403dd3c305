#pragma once

#import <AppKit/AppKit.h>
#include <memory>

#include "platform/app_kit.h"

// The view that a host places. What happens to it goes to a view of the library, which it keeps
// weakly; without one it takes no event.
@interface VLMHostedView : NSView {
  std::weak_ptr<vlm::platform::NSView> owner_;
}
- (void)serve:(std::weak_ptr<vlm::platform::NSView>)owner;
// The overridden methods as AppKit has them, for the library's view to call.
- (NSView*)originalHitTest:(NSPoint)point;
- (void)originalViewDidMoveToWindow;
- (void)originalViewDidChangeBackingProperties;
@end
