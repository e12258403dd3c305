#include "platform/linux/view/view_renderer.h"

#include <new>
#include <utility>

#include "platform/linux/x11/reply.h"

namespace vlm::platform::view {

std::unique_ptr<ViewRenderer> ViewRenderer::make(std::shared_ptr<x11::Connection> connection) {
  auto window = ViewWindow::make(*connection);
  if (!window) return nullptr;
  return std::unique_ptr<ViewRenderer>(new ViewRenderer(std::move(connection), std::move(window)));
}

ViewRenderer::ViewRenderer(std::shared_ptr<x11::Connection> connection,
                           std::unique_ptr<ViewWindow> window)
    : connection_(std::move(connection)), window_(std::move(window)), image_(*connection_) {}

void ViewRenderer::setLayer(std::shared_ptr<DisplayLayer> layer) {
  layer_ = std::move(layer);
  if (lost_) {
    if (layer_) layer_->lose();
  } else if (picture_) {
    removePicture();
  }
}

bool ViewRenderer::run() {
  moved_ = false;
  // Events that are read along with an answer don't wake the thread any more, so it goes on until
  // there is none left.
  do {
    takeFromLayer();
    drawIfNeeded();
    xcb_flush(connection_->get());
  } while (handleEvents());
  return moved_;
}

bool ViewRenderer::handleEvents() {
  bool any = false;
  while (!lost_) {
    const x11::Reply<xcb_generic_event_t> event(xcb_poll_for_event(connection_->get()));
    if (!event) break;
    handle(*event);
    any = true;
  }
  if (connection_->isLost()) lose();
  return any && !lost_;
}

void ViewRenderer::handle(const xcb_generic_event_t& event) {
  if (image_.handle(event) == WindowImage::Outcome::refused && layer_) layer_->refuse();
  switch (window_->handle(event)) {
    case ViewWindow::Change::moved:
      moved_ = true;
      break;
    case ViewWindow::Change::resized:
    case ViewWindow::Change::exposed:
      stale_ = static_cast<bool>(picture_);
      break;
    case ViewWindow::Change::gone:
      lose();
      break;
    case ViewWindow::Change::none:
      break;
  }
}

void ViewRenderer::takeFromLayer() {
  if (!layer_ || lost_) return;
  auto work = layer_->take();
  if (work.removeImage) removePicture();
  if (!work.picture) return;
  if (!picture_) window_->showDrawing();
  picture_ = std::move(work.picture);
  stale_ = true;
}

void ViewRenderer::removePicture() {
  picture_ = nullptr;
  stale_ = false;
  window_->showBlack();
}

void ViewRenderer::drawIfNeeded() {
  if (lost_ || image_.isUnderWay()) return;
  if (stale_ && window_->isVisible()) draw();
  // A picture that nobody could see is kept and not waited for.
  if (layer_ && !image_.isUnderWay()) layer_->done();
}

void ViewRenderer::draw() try {
  stale_ = false;
  const auto target = image_.reserve(window_->width(), window_->height());
  if (drawing_.draw(*picture_, target)) {
    image_.put(target, window_->id(), window_->context());
  } else if (layer_) {
    layer_->refuse();
  }
} catch (const std::bad_alloc&) {
  if (layer_) layer_->refuse();
}

void ViewRenderer::lose() {
  if (std::exchange(lost_, true)) return;
  picture_ = nullptr;
  stale_ = false;
  if (layer_) layer_->lose();
}

}  // namespace vlm::platform::view
