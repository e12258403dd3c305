#include "platform/app_kit.h"

#include <cstdint>
#include <utility>

#include "platform/dispatch.h"
#include "platform/linux/view/view_thread.h"

namespace vlm::platform {
namespace {

// X11 knows pixels only.
constexpr double kScale = 1.0;

}  // namespace

struct NSView::Impl {
  std::unique_ptr<ViewThread> thread;
  std::uint32_t window = 0;
};

NSView::NSView() = default;
NSView::~NSView() = default;

bool NSView::initWithFrame(CGRect) {
  auto thread = ViewThread::start([view = weak_from_this()] {
    dispatch_get_main_queue()->async([view] {
      if (const auto self = view.lock()) self->viewDidMoveToWindow();
    });
  });
  if (!thread) return false;
  impl_ = std::make_unique<Impl>();
  impl_->window = thread->window();
  impl_->thread = std::move(thread);
  return true;
}

NSView* NSView::hitTest(CGPoint) {
  return this;
}

void NSView::viewDidMoveToWindow() {}
void NSView::viewDidChangeBackingProperties() {}

void NSView::setLayer(std::shared_ptr<AVSampleBufferDisplayLayer> layer) {
  impl_->thread->setLayer(std::static_pointer_cast<DisplayLayer>(std::move(layer)));
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

void* NSView::hostPointer() const {
  return &impl_->window;
}

std::optional<double> mainScreenBackingScaleFactor() {
  if (!x11::Connection::open()) return std::nullopt;
  return kScale;
}

}  // namespace vlm::platform
