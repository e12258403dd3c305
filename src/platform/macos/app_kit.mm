#include "platform/app_kit.h"

#import <AppKit/AppKit.h>
#include <utility>

#include "platform/macos/bridge/display_layer.h"
#include "platform/macos/bridge/event_monitor.h"
#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/hosted_view.h"
#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/objc.h"
#include "platform/macos/bridge/queue.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

static_assert(NSEventMaskKeyDown == ::NSEventMaskKeyDown);

struct NSView::Impl {
  bridge::Objc<VLMHostedView> view;
  // The framework's view keeps the framework's layer; this keeps what the library configures it by.
  std::shared_ptr<AVSampleBufferDisplayLayer> layer;
};

NSView::NSView() : impl_(std::make_unique<Impl>()) {}

// A view may only end on the main thread.
NSView::~NSView() {
  bridge::releaseOnMainThread(impl_->view.release(),
                              [](void* view) { [static_cast<id>(view) release]; });
}

bool NSView::initWithFrame(CGRect frame) {
  bridge::guarded([&] {
    impl_->view = bridge::Objc<VLMHostedView>::adopting(
        [[VLMHostedView alloc] initWithFrame:bridge::toNative(frame)]);
    [impl_->view.get() serve:weak_from_this()];
  });
  return static_cast<bool>(impl_->view);
}

NSView* NSView::hitTest(CGPoint point) {
  NSView* hit = nullptr;
  bridge::guarded([&] {
    if ([impl_->view.get() originalHitTest:bridge::toNative(point)] != nil) hit = this;
  });
  return hit;
}

void NSView::viewDidMoveToWindow() {
  bridge::guarded([&] { [impl_->view.get() originalViewDidMoveToWindow]; });
}

void NSView::viewDidChangeBackingProperties() {
  bridge::guarded([&] { [impl_->view.get() originalViewDidChangeBackingProperties]; });
}

void NSView::setLayer(std::shared_ptr<AVSampleBufferDisplayLayer> layer) {
  CALayer* const native =
      layer == nullptr ? nil : static_cast<bridge::DisplayLayer&>(*layer).native();
  bridge::guarded([&] { [impl_->view.get() setLayer:native]; });
  impl_->layer = std::move(layer);
}

void NSView::setWantsLayer(bool wanted) {
  bridge::guarded([&] { [impl_->view.get() setWantsLayer:wanted]; });
}

CGRect NSView::bounds() const {
  CGRect bounds;
  bridge::guarded([&] {
    if (impl_->view) bounds = bridge::fromNative([impl_->view.get() bounds]);
  });
  return bounds;
}

std::optional<double> NSView::windowBackingScaleFactor() const {
  std::optional<double> factor;
  bridge::guarded([&] {
    NSWindow* const window = [impl_->view.get() window];
    if (window != nil) factor = [window backingScaleFactor];
  });
  return factor;
}

void NSView::removeFromSuperview() {
  bridge::guarded([&] { [impl_->view.get() removeFromSuperview]; });
}

void* NSView::hostPointer() const {
  return impl_->view.get();
}

std::optional<double> mainScreenBackingScaleFactor() {
  std::optional<double> factor;
  bridge::guarded([&] {
    NSScreen* const screen = [NSScreen mainScreen];
    if (screen != nil) factor = [screen backingScaleFactor];
  });
  return factor;
}

namespace {

NSRunningApplication fromNative(::NSRunningApplication* application) {
  return {bridge::optionalText(application.bundleIdentifier), application.processIdentifier};
}

}  // namespace

bool NSWorkspace::openURL(const NSURL& url) {
  bool opened = false;
  bridge::guarded([&] {
    const auto string = bridge::toString(url.absoluteString);
    ::NSURL* const native = string ? [::NSURL URLWithString:(NSString*)string.get()] : nil;
    opened = native != nil && [[::NSWorkspace sharedWorkspace] openURL:native];
  });
  return opened;
}

std::vector<NSRunningApplication> NSWorkspace::runningApplications() {
  std::vector<NSRunningApplication> result;
  bridge::guarded([&] {
    for (::NSRunningApplication* application in
         [[::NSWorkspace sharedWorkspace] runningApplications]) {
      result.push_back(fromNative(application));
    }
  });
  return result;
}

std::optional<NSRunningApplication> NSWorkspace::frontmostApplication() {
  std::optional<NSRunningApplication> result;
  bridge::guarded([&] {
    ::NSRunningApplication* const front = [[::NSWorkspace sharedWorkspace] frontmostApplication];
    if (front != nil) result = fromNative(front);
  });
  return result;
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addGlobalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<void(const NSEvent&)> handler) {
  return bridge::EventMonitor::global(mask, std::move(handler));
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addLocalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<const NSEvent*(const NSEvent&)> handler) {
  return bridge::EventMonitor::local(mask, std::move(handler));
}

void NSEventMonitor::removeMonitor(const std::shared_ptr<NSEventMonitor>& monitor) {
  if (monitor != nullptr) static_cast<bridge::EventMonitor&>(*monitor).remove();
}

}  // namespace vlm::platform
