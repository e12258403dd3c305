#include "platform/linux/view/view_thread.h"

#include <poll.h>

#include <array>
#include <chrono>
#include <utility>

#include "platform/linux/view/view_renderer.h"
#include "platform/portable/thread_names.h"

namespace vlm::platform::view {
namespace {

// A host asks for the window on its main thread, which must not wait for the server.
constexpr auto kLongestConfirmation = std::chrono::seconds(1);

}  // namespace

std::unique_ptr<ViewThread> ViewThread::start(std::function<void()> moved) {
  std::unique_ptr<ViewThread> view(new ViewThread(std::move(moved)));
  const auto started = std::make_shared<std::promise<bool>>();
  auto isMade = started->get_future();
  view->thread_ = Thread(thread_names::kView,
                         [self = view.get(), started] { self->main(std::move(*started)); });
  return isMade.get() ? std::move(view) : nullptr;
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
  thread_ = {};
}

xcb_window_t ViewThread::confirmedWindow() {
  const auto limit = std::chrono::steady_clock::now() + kLongestConfirmation;
  MutexLock lock(mutex_);
  const auto mine = ++asked_;
  wakeUp_->signal();
  while (answered_ < mine) {
    if (confirmed_.wait_until(mutex_, limit) == std::cv_status::timeout) break;
  }
  return window_;
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

void ViewThread::main(std::promise<bool> started) {
  const auto renderer = makeRenderer();
  if (renderer) publish(*renderer);
  started.set_value(renderer != nullptr);
  if (!renderer) return;
  while (applyRequests(*renderer)) {
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

bool ViewThread::applyRequests(ViewRenderer& renderer) {
  wakeUp_->clear();
  std::shared_ptr<DisplayLayer> layer;
  bool takeOut = false;
  bool confirm = false;
  {
    const MutexLock lock(mutex_);
    if (ended_) return false;
    layer = std::exchange(newLayer_, nullptr);
    takeOut = std::exchange(takeOutWanted_, false);
    inWork_ = asked_;
    confirm = inWork_ != answered_;
  }
  if (layer) renderer.setLayer(std::move(layer));
  if (takeOut) renderer.takeOut();
  if (confirm) renderer.catchUp();
  return true;
}

void ViewThread::publish(const ViewRenderer& renderer) {
  const auto& window = renderer.window();
  const MutexLock lock(mutex_);
  window_ = window.id();
  inHost_ = window.isInHost();
  size_ = {static_cast<double>(window.width()), static_cast<double>(window.height())};
  if (answered_ == inWork_) return;
  answered_ = inWork_;
  confirmed_.notify_all();
}

void ViewThread::sleep(const ViewRenderer& renderer) const {
  // A descriptor below 0 is not looked at: a lost connection would be ready for ever.
  std::array<pollfd, 2> sources{
      pollfd{wakeUp_->descriptor(), POLLIN, 0},
      pollfd{renderer.isLost() ? -1 : connection_->descriptor(), POLLIN, 0}};
  poll(sources.data(), sources.size(), -1);
}

}  // namespace vlm::platform::view
