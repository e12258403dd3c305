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
  if (layer_) layer_->setHasPlace(hasPlace_);
  if (picture_ && !lost_) removePicture();
}

void ViewRenderer::catchUp() {
  const x11::Reply<xcb_get_input_focus_reply_t> answer(xcb_get_input_focus_reply(
      connection_->get(), xcb_get_input_focus(connection_->get()), nullptr));
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
  const auto outcome = image_.handle(event);
  if (outcome == WindowImage::Outcome::shown) window_->takeViewable();
  if (outcome == WindowImage::Outcome::refused && layer_) layer_->refuse();
  switch (window_->handle(event)) {
    case ViewWindow::Change::moved:
      moved_ = true;
      if (window_->isInHost() && !std::exchange(hasPlace_, true) && layer_) {
        layer_->setHasPlace(true);
      }
      break;
    case ViewWindow::Change::exposed:
      stale_ = static_cast<bool>(picture_);
      break;
    case ViewWindow::Change::gone:
      replaceWindow();
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
  const bool mustResize = window_->mustResize();
  if (picture_ && window_->isVisible() && (stale_ || mustResize)) {
    draw();
  } else if (mustResize) {
    window_->resize(/*andDraws=*/false);
  }
  // A picture that could not be seen is kept and not waited for.
  if (layer_ && !image_.isUnderWay()) layer_->done();
}

void ViewRenderer::draw() try {
  stale_ = false;
  const auto target = image_.reserve(window_->width(), window_->height());
  if (drawing_.draw(*picture_, target)) {
    put(target);
  } else if (layer_) {
    layer_->refuse();
  }
} catch (const std::bad_alloc&) {
  if (layer_) layer_->refuse();
}

void ViewRenderer::put(const PixelTarget& target) {
  auto* const connection = connection_->get();
  // No other client may look, or be shown, between the new size and its picture. The picture must
  // be in the server's reach already: one that is sent would hold up the whole desktop.
  const bool atOnce = window_->mustResize() && image_.isShared();
  if (atOnce) xcb_grab_server(connection);
  if (window_->mustResize()) window_->resize(atOnce);
  image_.put(target, window_->id(), window_->context());
  if (atOnce) xcb_ungrab_server(connection);
  window_->askIfViewable();
  if (!image_.isUnderWay()) window_->takeViewable();
}

void ViewRenderer::replaceWindow() {
  loseWindow();
  moved_ = true;
  auto window = ViewWindow::make(*connection_);
  if (!window) return lose();
  window_ = std::move(window);
}

void ViewRenderer::loseWindow() {
  hasPlace_ = false;
  if (layer_) layer_->setHasPlace(false);
}

void ViewRenderer::lose() {
  if (std::exchange(lost_, true)) return;
  picture_ = nullptr;
  stale_ = false;
  loseWindow();
}

}  // namespace vlm::platform::view
