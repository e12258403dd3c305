#include "platform/macos/bridge/hosted_view.h"

#include <utility>

@implementation VLMHostedView

- (void)serve:(std::weak_ptr<vlm::platform::NSView>)owner {
  owner_ = std::move(owner);
}

- (NSView*)hitTest:(NSPoint)point {
  const auto owner = owner_.lock();
  if (owner == nullptr) return nil;
  const auto* const hit = owner->hitTest({point.x, point.y});
  return hit == nullptr ? nil : static_cast<NSView*>(hit->hostPointer());
}

- (void)viewDidMoveToWindow {
  const auto owner = owner_.lock();
  if (owner != nullptr) {
    owner->viewDidMoveToWindow();
  } else {
    [super viewDidMoveToWindow];
  }
}

- (void)viewDidChangeBackingProperties {
  const auto owner = owner_.lock();
  if (owner != nullptr) {
    owner->viewDidChangeBackingProperties();
  } else {
    [super viewDidChangeBackingProperties];
  }
}

- (NSView*)originalHitTest:(NSPoint)point {
  return [super hitTest:point];
}

- (void)originalViewDidMoveToWindow {
  [super viewDidMoveToWindow];
}

- (void)originalViewDidChangeBackingProperties {
  [super viewDidChangeBackingProperties];
}

@end
