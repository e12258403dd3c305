// Not served yet: no view can be made.
#include "platform/app_kit.h"

namespace vlm::platform {

struct NSView::Impl {};

NSView::NSView() = default;
NSView::~NSView() = default;
bool NSView::initWithFrame(CGRect) {
  return false;
}
NSView* NSView::hitTest(CGPoint) {
  return this;
}
void NSView::viewDidMoveToWindow() {}
void NSView::viewDidChangeBackingProperties() {}
void NSView::setLayer(std::shared_ptr<AVSampleBufferDisplayLayer>) {}
void NSView::setWantsLayer(bool) {}
CGRect NSView::bounds() const {
  return {};
}
std::optional<double> NSView::windowBackingScaleFactor() const {
  return std::nullopt;
}
void NSView::removeFromSuperview() {}
void* NSView::hostPointer() const {
  return nullptr;
}
std::optional<double> mainScreenBackingScaleFactor() {
  return std::nullopt;
}

}  // namespace vlm::platform
