#include "platform/app_kit.h"

#include <utility>

#include "platform/scripted/machine.h"

namespace vlm::platform {
namespace {

scripted::Fault enterOnMain(const char* operation, std::initializer_list<CFValue> arguments = {}) {
  return scripted::Machine::current().journal.enter(
      std::string(scripted::offMainPrefix()) + "NSView " + operation, arguments);
}

scripted::DisplayStage& displayStage() {
  return scripted::Machine::current().display;
}

}  // namespace

struct NSView::Impl {
  std::shared_ptr<AVSampleBufferDisplayLayer> layer;
};

NSView::NSView() : impl_(std::make_unique<Impl>()) {}
NSView::~NSView() = default;

bool NSView::initWithFrame(CGRect frame) {
  return !enterOnMain("initWithFrame", {scripted::describe(frame)}).nothing;
}

NSView* NSView::hitTest(CGPoint) {
  return this;
}

void NSView::viewDidMoveToWindow() {
  enterOnMain("viewDidMoveToWindow");
}

void NSView::viewDidChangeBackingProperties() {
  enterOnMain("viewDidChangeBackingProperties");
}

void NSView::setLayer(std::shared_ptr<AVSampleBufferDisplayLayer> layer) {
  const auto scripted = std::dynamic_pointer_cast<scripted::ScriptedLayer>(layer);
  enterOnMain("setLayer", {scripted ? CFValue(scripted->name()) : CFValue()});
  impl_->layer = std::move(layer);
}

void NSView::setWantsLayer(bool wanted) {
  enterOnMain("setWantsLayer", {wanted});
}

CGRect NSView::bounds() const {
  return displayStage().viewBounds;
}

std::optional<double> NSView::windowBackingScaleFactor() const {
  return displayStage().windowScale;
}

void NSView::removeFromSuperview() {
  enterOnMain("removeFromSuperview");
}

void* NSView::hostPointer() const {
  return const_cast<NSView*>(this);
}

std::optional<double> mainScreenBackingScaleFactor() {
  return displayStage().mainScreenScale;
}

}  // namespace vlm::platform
