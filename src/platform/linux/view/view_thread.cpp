#include "platform/linux/view/view_thread.h"

#include <poll.h>
#include <pthread.h>

#include <array>
#include <csignal>
#include <utility>

#include "platform/linux/view/view_renderer.h"

namespace vlm::platform::view {
namespace {

// The host's signals are handled on the host's threads, and writing to a lost server is an error
// here, not the signal that would end the process.
void blockSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

}  // namespace

std::unique_ptr<ViewThread> ViewThread::start(std::function<void()> moved) {
  std::unique_ptr<ViewThread> view(new ViewThread(std::move(moved)));
  std::promise<xcb_window_t> started;
  auto window = started.get_future();
  view->thread_ = std::thread([self = view.get(), started = std::move(started)]() mutable {
    self->main(std::move(started));
  });
  view->window_ = window.get();
  return view->window_ != XCB_NONE ? std::move(view) : nullptr;
}

ViewThread::~ViewThread() {
  {
    const MutexLock lock(mutex_);
    ended_ = true;
  }
  wakeUp_->signal();
  // A thread that waits for an answer of the server hears that there will be none. The server ends
  // the window, and the memory shared for it, together with the connection.
  if (connection_) connection_->hangUp();
  if (thread_.joinable()) thread_.join();
}

bool ViewThread::isInHost() const {
  const MutexLock lock(mutex_);
  return inHost_;
}

CGSize ViewThread::size() const {
  const MutexLock lock(mutex_);
  return size_;
}

void ViewThread::setLayer(std::shared_ptr<DisplayLayer> layer) {
  layer->attach(wakeUp_);
  const MutexLock lock(mutex_);
  newLayer_ = std::move(layer);
  wakeUp_->signal();
}

void ViewThread::takeOut() {
  const MutexLock lock(mutex_);
  takeOutWanted_ = true;
  wakeUp_->signal();
}

void ViewThread::main(std::promise<xcb_window_t> started) {
  pthread_setname_np(pthread_self(), "vlm.view");
  blockSignals();
  const auto renderer = makeRenderer();
  started.set_value(renderer ? renderer->window().id() : XCB_NONE);
  if (!renderer) return;
  while (obey(*renderer)) {
    const bool moved = renderer->run();
    publish(*renderer);
    if (moved) moved_();
    sleep(*renderer);
  }
}

std::unique_ptr<ViewRenderer> ViewThread::makeRenderer() {
  connection_ = x11::Connection::open();
  return connection_ ? ViewRenderer::make(connection_) : nullptr;
}

bool ViewThread::obey(ViewRenderer& renderer) {
  wakeUp_->clear();
  std::shared_ptr<DisplayLayer> layer;
  bool takeOut = false;
  {
    const MutexLock lock(mutex_);
    if (ended_) return false;
    layer = std::exchange(newLayer_, nullptr);
    takeOut = std::exchange(takeOutWanted_, false);
  }
  if (layer) renderer.setLayer(std::move(layer));
  if (takeOut) renderer.takeOut();
  return true;
}

void ViewThread::publish(const ViewRenderer& renderer) {
  const auto& window = renderer.window();
  const MutexLock lock(mutex_);
  inHost_ = window.isInHost();
  size_ = {static_cast<double>(window.width()), static_cast<double>(window.height())};
}

void ViewThread::sleep(const ViewRenderer& renderer) const {
  // A descriptor below 0 is not looked at: a lost connection would be ready for ever.
  std::array<pollfd, 2> sources{
      pollfd{wakeUp_->descriptor(), POLLIN, 0},
      pollfd{renderer.isLost() ? -1 : connection_->descriptor(), POLLIN, 0}};
  poll(sources.data(), sources.size(), -1);
}

}  // namespace vlm::platform::view
