#include "platform/app_kit.h"

#include <algorithm>
#include <utility>

#include "platform/scripted/machine/question.h"

namespace vlm::platform {
namespace {

scripted::Fault enterOnMain(const char* operation, std::initializer_list<CFValue> arguments = {}) {
  return scripted::Machine::current().journal.enter(
      std::string(scripted::offMainPrefix()) + "NSView " + operation, arguments);
}

scripted::DisplayStage& displayStage() {
  return scripted::Machine::current().display;
}

std::shared_ptr<NSEventMonitor> addMonitor(const char* kind, NSEventMask mask, bool local,
                                           std::function<const NSEvent*(const NSEvent&)> handler) {
  auto& machine = scripted::Machine::current();
  const auto line = std::string(scripted::offMainPrefix()) + "NSEvent add" + kind + "Monitor";
  if (machine.journal.enter(line, {static_cast<std::int64_t>(mask)}).nothing) return nullptr;
  auto monitor = std::make_shared<scripted::ScriptedMonitor>(local, std::move(handler));
  machine.desktop.monitors.push_back(monitor);
  return monitor;
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

bool NSWorkspace::openURL(const NSURL& url) {
  return scripted::ask("NSWorkspace openURL", {url.absoluteString}).opensUrls;
}

std::vector<NSRunningApplication> NSWorkspace::runningApplications() {
  return scripted::Machine::current().desktop.running;
}

std::optional<NSRunningApplication> NSWorkspace::frontmostApplication() {
  return scripted::Machine::current().desktop.frontmost;
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addGlobalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<void(const NSEvent&)> handler) {
  return addMonitor("Global", mask, false,
                    [handler = std::move(handler)](const NSEvent& event) -> const NSEvent* {
                      handler(event);
                      return nullptr;
                    });
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addLocalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<const NSEvent*(const NSEvent&)> handler) {
  return addMonitor("Local", mask, true, std::move(handler));
}

void NSEventMonitor::removeMonitor(const std::shared_ptr<NSEventMonitor>& monitor) {
  auto& machine = scripted::Machine::current();
  machine.journal.enter(std::string(scripted::offMainPrefix()) + "NSEvent removeMonitor");
  std::erase(machine.desktop.monitors, monitor);
}

}  // namespace vlm::platform
