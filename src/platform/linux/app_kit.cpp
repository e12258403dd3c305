#include "platform/app_kit.h"

#include <atomic>
#include <cstdint>
#include <utility>

#include "platform/dispatch.h"
#include "platform/linux/desktop/applications.h"
#include "platform/linux/desktop/settings_pages.h"
#include "platform/linux/input/key_monitors.h"
#include "platform/linux/view/view_thread.h"

namespace vlm::platform {
namespace {

// X11 knows pixels only.
constexpr double kScale = 1.0;

}  // namespace

struct NSView::Impl {
  std::unique_ptr<view::ViewThread> thread;
  std::uint32_t window = 0;
};

NSView::NSView() = default;
NSView::~NSView() = default;

bool NSView::initWithFrame(CGRect) {
  auto thread = view::ViewThread::start([view = weak_from_this()] {
    dispatch_get_main_queue()->async([view] {
      if (const auto self = view.lock()) self->viewDidMoveToWindow();
    });
  });
  if (!thread) return false;
  impl_ = std::make_unique<Impl>();
  impl_->thread = std::move(thread);
  return true;
}

NSView* NSView::hitTest(CGPoint) {
  return this;
}

void NSView::viewDidMoveToWindow() {}
void NSView::viewDidChangeBackingProperties() {}

void NSView::setLayer(std::shared_ptr<AVSampleBufferDisplayLayer> layer) {
  impl_->thread->setLayer(std::static_pointer_cast<view::DisplayLayer>(std::move(layer)));
}

// A view shows its layer from the moment it has one.
void NSView::setWantsLayer(bool) {}

CGRect NSView::bounds() const {
  return {{}, impl_->thread->size()};
}

std::optional<double> NSView::windowBackingScaleFactor() const {
  if (!impl_->thread->isInHost()) return std::nullopt;
  return kScale;
}

void NSView::removeFromSuperview() {
  impl_->thread->takeOut();
}

// The window is another one when the host's window was destroyed with the view in it. What the host
// reads changes only here, during a call of the host.
void* NSView::hostPointer() const {
  std::atomic_ref(impl_->window).store(impl_->thread->confirmedWindow());
  return &impl_->window;
}

std::optional<double> mainScreenBackingScaleFactor() {
  if (!x11::Connection::open()) return std::nullopt;
  return kScale;
}

bool NSWorkspace::openURL(const NSURL& url) {
  return desktop::open(url);
}

std::vector<NSRunningApplication> NSWorkspace::runningApplications() {
  return desktop::runningApplications();
}

std::optional<NSRunningApplication> NSWorkspace::frontmostApplication() {
  return desktop::frontmostApplication();
}

std::shared_ptr<NSEventMonitor> NSEventMonitor::addGlobalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<void(const NSEvent&)> handler) {
  if (mask != NSEventMaskKeyDown) return nullptr;
  return input::addKeyMonitor(false, std::move(handler));
}

// What is recorded has been delivered already: the event goes on whatever the handler returns.
std::shared_ptr<NSEventMonitor> NSEventMonitor::addLocalMonitorForEventsMatchingMask(
    NSEventMask mask, std::function<const NSEvent*(const NSEvent&)> handler) {
  if (mask != NSEventMaskKeyDown) return nullptr;
  return input::addKeyMonitor(
      true, [handler = std::move(handler)](const NSEvent& event) { handler(event); });
}

void NSEventMonitor::removeMonitor(const std::shared_ptr<NSEventMonitor>& monitor) {
  if (monitor) input::removeKeyMonitor(*monitor);
}

}  // namespace vlm::platform
